import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// How to get an OpenAI API key and where to put it. Shows no live state.
Popup {
    id: sheet
    property string saveKeyStepText
    property url apiKeysURL: "https://platform.openai.com/api-keys"
    property url billingURL: "https://platform.openai.com/settings/organization/billing/overview"
    property url quickstartURL: "https://platform.openai.com/docs/quickstart"

    objectName: "keyHelpSheet"
    modal: true
    parent: Overlay.overlay
    anchors.centerIn: parent
    width: 480
    padding: 24
    closePolicy: Popup.CloseOnEscape

    Overlay.modal: Rectangle { color: AppTheme.scrim }

    background: Rectangle {
        color: AppTheme.pageBackground
        radius: 14
        border.width: 1
        border.color: AppTheme.border
    }

    contentItem: ColumnLayout {
        Accessible.role: Accessible.Dialog
        Accessible.name: "Get an OpenAI API key"
        spacing: 20

        RowLayout {
            Layout.fillWidth: true
            spacing: 12
            Rectangle {
                Layout.alignment: Qt.AlignTop
                implicitWidth: 34
                implicitHeight: 34
                radius: 8
                color: AppTheme.accentMutedBackground
                SymbolImage { anchors.centerIn: parent; symbol: "key.fill"; tint: AppTheme.accent; size: 18 }
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                Text {
                    text: "Get an OpenAI API key"
                    color: AppTheme.heroTitle
                    font.pixelSize: 17
                    font.weight: Font.Bold
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    Layout.fillWidth: true
                    text: "Quorla uses your own OpenAI account for transcription, translation, and cleanup."
                    color: AppTheme.secondaryText
                    wrapMode: Text.Wrap
                }
            }
            ToolButton {
                objectName: "closeKeyHelpButton"
                Layout.alignment: Qt.AlignTop
                icon.source: AppTheme.symbolSource("xmark", AppTheme.secondaryText)
                Accessible.name: "Close"
                ToolTip.visible: hovered
                ToolTip.text: "Close"
                onClicked: sheet.close()
            }
        }

        OpenAIKeyHelpStepRow {
            number: 1
            title: "Open API keys"
            detail: "Sign in or create an OpenAI Platform account, then open the API keys page."
        }
        OpenAIKeyHelpStepRow {
            number: 2
            title: "Create a key"
            detail: "Click Create new secret key. Copy it right away because OpenAI only shows it once."
        }
        OpenAIKeyHelpStepRow { number: 3; title: "Save it in Quorla"; detail: sheet.saveKeyStepText }

        Text {
            Layout.fillWidth: true
            text: "If OpenAI says your account has no credit, open Billing and add a payment method or credits."
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            Button { text: "Open API keys"; Accessible.name: text; onClicked: Qt.openUrlExternally(sheet.apiKeysURL) }
            Button {
                text: "Billing"
                icon.source: AppTheme.symbolSource("creditcard", AppTheme.primaryText)
                Accessible.name: text
                onClicked: Qt.openUrlExternally(sheet.billingURL)
            }
            Button {
                text: "OpenAI guide"
                icon.source: AppTheme.symbolSource("book", AppTheme.primaryText)
                Accessible.name: text
                onClicked: Qt.openUrlExternally(sheet.quickstartURL)
            }
            Item { Layout.fillWidth: true }
            Button {
                objectName: "keyHelpDoneButton"
                text: "Done"
                highlighted: true
                Accessible.name: text
                onClicked: sheet.close()
            }
        }
    }
    // Return takes the default action.
    Shortcut { sequences: ["Return", "Enter"]; enabled: sheet.opened; onActivated: sheet.close() }
}
