import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// The sections, and below them the pinned setup row.
Rectangle {
    id: sidebar
    required property QtObject presenter

    color: AppTheme.secondarySurface

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 4

        Repeater {
            model: sidebar.presenter.sections
            delegate: ItemDelegate {
                id: row
                required property var modelData
                objectName: "sidebarRow_" + modelData.key
                Layout.fillWidth: true
                highlighted: sidebar.presenter.selectedSection === modelData.key
                text: modelData.title
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.title
                Accessible.selected: highlighted
                onClicked: sidebar.presenter.selectedSection = modelData.key
                background: Rectangle {
                    radius: 8
                    color: row.highlighted ? AppTheme.accentMutedBackground : (row.hovered ? AppTheme.border : "transparent")
                }
                contentItem: RowLayout {
                    spacing: 10
                    SymbolImage {
                        symbol: row.modelData.symbol
                        tint: row.highlighted ? AppTheme.accent : AppTheme.primaryText
                    }
                    Text {
                        Layout.fillWidth: true
                        text: row.modelData.title
                        color: AppTheme.primaryText
                        font.weight: row.highlighted ? Font.DemiBold : Font.Normal
                    }
                }
            }
        }

        Item { Layout.fillHeight: true }

        ItemDelegate {
            id: pinned
            objectName: "sidebarSetupRow"
            Layout.fillWidth: true
            text: sidebar.presenter.setupRowText
            Accessible.role: Accessible.Button
            Accessible.name: text
            onClicked: sidebar.presenter.presentOnboarding()
            background: Rectangle {
                radius: 10
                color: pinned.hovered ? AppTheme.surface : "transparent"
                border.width: 1
                border.color: AppTheme.border
            }
            contentItem: RowLayout {
                spacing: 8
                StatusPill {
                    implicitWidth: 10
                    implicitHeight: 10
                    text: ""
                    tone: sidebar.presenter.setupRowTone
                }
                Text { Layout.fillWidth: true; text: pinned.text; color: AppTheme.primaryText }
            }
        }
    }
}
