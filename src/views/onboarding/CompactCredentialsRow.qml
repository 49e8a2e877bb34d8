import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// The API key: its state, the secure field, Save and the way to get a key.
ColumnLayout {
    id: row
    required property QtObject appModel
    required property QtObject presenter
    signal helpRequested()

    function focusKeyField() { keyField.forceActiveFocus() }

    Layout.fillWidth: true
    spacing: 8

    RowLayout {
        spacing: 8
        Text { text: "OpenAI key"; color: AppTheme.primaryText; font.weight: Font.DemiBold }
        StatusPill { objectName: "keyStatusPill"; text: row.presenter.keyStatusText; tone: row.presenter.keyTone }
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: 8
        TextField {
            id: keyField
            objectName: "apiKeyField"
            Layout.fillWidth: true
            echoMode: TextInput.Password
            placeholderText: "sk-proj-..."
            text: row.appModel.apiKeyDraft
            Accessible.name: "OpenAI API key"
            // Qt 6.4 reports no name for a password field; the description still names it.
            Accessible.description: "OpenAI API key"
            onTextEdited: row.appModel.apiKeyDraft = text
            onAccepted: row.appModel.saveAPIKey()
        }
        Button {
            objectName: "saveKeyButton"
            text: "Save"
            highlighted: true
            Accessible.name: "Save"
            onClicked: row.appModel.saveAPIKey()
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Button {
            objectName: "unlockKeyButton"
            visible: row.appModel.isKeychainLocked
            text: row.presenter.unlockKeyTitle
            Accessible.name: text
            onClicked: row.appModel.unlockKeychain()
        }
        Button {
            objectName: "keyHelpButton"
            text: "How to get an API key"
            flat: true
            icon.source: AppTheme.symbolSource("questionmark.circle", AppTheme.accent)
            Accessible.name: text
            onClicked: row.helpRequested()
        }
        Item { Layout.fillWidth: true }
    }
    Text {
        objectName: "keyFootnote"
        Layout.fillWidth: true
        text: row.presenter.keyFootnote
        color: AppTheme.secondaryText
        font.pixelSize: 11
        wrapMode: Text.Wrap
    }
}
