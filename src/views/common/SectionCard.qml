import QtQuick
import QtQuick.Layouts
import Quorla.Views

// A titled surface holding one group of rows.
Rectangle {
    id: card
    property string title
    property string detail
    default property alias content: body.data

    Layout.fillWidth: true
    implicitHeight: column.implicitHeight + 36
    radius: 12
    color: AppTheme.surface
    border.width: 1
    border.color: AppTheme.border

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 18
        spacing: 12

        ColumnLayout {
            spacing: 2
            visible: card.title.length > 0
            Text {
                text: card.title
                color: AppTheme.primaryText
                font.pixelSize: 15
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                Layout.fillWidth: true
                visible: card.detail.length > 0
                text: card.detail
                color: AppTheme.secondaryText
                wrapMode: Text.Wrap
            }
        }
        ColumnLayout {
            id: body
            Layout.fillWidth: true
            spacing: 10
        }
    }
}
