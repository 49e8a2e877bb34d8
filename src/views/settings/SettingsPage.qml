import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// Every preference, the API key, the service address and the permissions. Each
// control writes its preference at once; only the key has a Save button.
DetailPage {
    id: page
    required property QtObject appModel
    title: "Settings"
    subtitle: "Dictation, translation, your OpenAI key and the permissions Quorla uses."

    SettingsPresenter { id: settings; objectName: "settingsPresenter"; model: page.appModel }
    SystemPresenter { id: system; objectName: "systemPresenter" }
    OnboardingPresenter { id: setup; model: page.appModel }

    SectionCard {
        title: "Dictation"
        GridLayout {
            Layout.fillWidth: true
            columns: 2
            columnSpacing: 16
            rowSpacing: 10
            Label { text: "Trigger key" }
            ComboBox {
                objectName: "triggerPicker"
                Layout.fillWidth: true
                model: settings.triggerChoices
                currentIndex: settings.triggerIndex
                Accessible.name: "Trigger key"
                onActivated: index => settings.triggerIndex = index
            }
            Label { text: "Transcription" }
            ComboBox {
                objectName: "transcriptionModePicker"
                Layout.fillWidth: true
                model: settings.transcriptionModeChoices
                currentIndex: settings.transcriptionModeIndex
                Accessible.name: "Transcription mode"
                onActivated: index => settings.transcriptionModeIndex = index
            }
        }
        Switch {
            objectName: "listenOnTriggerDownSwitch"
            text: "Start listening as soon as the trigger goes down"
            checked: page.appModel.startListeningOnTriggerDown
            Accessible.name: text
            onToggled: page.appModel.startListeningOnTriggerDown = checked
        }
        Label {
            Layout.fillWidth: true
            text: "Keeps your first word; the microphone opens at each press that can start a dictation."
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }
        Switch {
            objectName: "polishSwitch"
            text: "Polish each transcript (fix punctuation and filler words)"
            checked: page.appModel.shouldPolishTranscript
            Accessible.name: "Polish transcripts"
            onToggled: page.appModel.shouldPolishTranscript = checked
        }
        Label { text: "Polish instructions"; enabled: page.appModel.shouldPolishTranscript }
        TextArea {
            objectName: "polishPromptField"
            Layout.fillWidth: true
            Layout.preferredHeight: 80
            enabled: page.appModel.shouldPolishTranscript
            wrapMode: TextEdit.Wrap
            placeholderText: "Optional: how the polish pass should treat your text"
            text: page.appModel.polishPrompt
            Accessible.name: "Polish instructions"
            onTextChanged: if (activeFocus) page.appModel.polishPrompt = text
            background: Rectangle {
                color: AppTheme.surface
                radius: 4
                border.width: 1
                border.color: parent.activeFocus ? AppTheme.accent : AppTheme.border
            }
        }
        Switch {
            objectName: "autoCopySwitch"
            text: "Copy each transcript to the clipboard"
            checked: page.appModel.autoCopyTranscript
            Accessible.name: text
            onToggled: page.appModel.autoCopyTranscript = checked
        }
        Switch {
            objectName: "trayIconSwitch"
            text: "Show Quorla in the tray"
            checked: page.appModel.showMenuBarIcon
            Accessible.name: text
            onToggled: page.appModel.showMenuBarIcon = checked
        }
    }

    SectionCard {
        title: "Translation"
        ComboBox {
            objectName: "translationPicker"
            Layout.fillWidth: true
            model: settings.translationChoices
            currentIndex: settings.translationIndex
            Accessible.name: "Translate to"
            onActivated: index => settings.translationIndex = index
        }
        Text {
            objectName: "translationSummary"
            Layout.fillWidth: true
            text: page.appModel.translationLanguageSummary
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }
    }

    SectionCard {
        title: "OpenAI key"
        CompactCredentialsRow {
            appModel: page.appModel
            presenter: setup
            onHelpRequested: keyHelp.open()
        }
        Button {
            objectName: "removeKeyButton"
            text: "Remove Key"
            enabled: page.appModel.hasStoredAPIKey
            Accessible.name: text
            onClicked: page.appModel.clearAPIKey()
        }
    }

    SectionCard {
        title: "Service address"
        detail: "Leave empty to use OpenAI. Set it to use an OpenAI-compatible server."
        TextField {
            objectName: "serviceAddressField"
            Layout.fillWidth: true
            placeholderText: "https://api.openai.com"
            text: settings.serviceAddress
            Accessible.name: "Service address"
            onTextEdited: settings.serviceAddress = text
        }
        InlineNotice {
            objectName: "serviceAddressMessage"
            Layout.fillWidth: true
            visible: text.length > 0
            text: settings.serviceAddressMessage
        }
    }

    SectionCard {
        title: "Use another key or a command"
        detail: "Where Quorla can't see the trigger key, or to dictate from a script, bind a key in your desktop's settings to a command. The text goes to the application that has focus when dictation starts."
        DictationCommandLines { id: commandLines }
        Repeater {
            model: commandLines.bindings
            ColumnLayout {
                required property var modelData
                Layout.fillWidth: true
                spacing: 4
                Label { text: modelData.desktop; color: AppTheme.secondaryText }
                RowLayout {
                    Layout.fillWidth: true
                    TextEdit {
                        Layout.fillWidth: true
                        text: modelData.lines
                        readOnly: true
                        selectByMouse: true
                        font.family: "monospace"
                        color: AppTheme.primaryText
                        Accessible.name: modelData.desktop
                    }
                    Button {
                        text: "Copy"
                        Accessible.name: "Copy for " + modelData.desktop
                        onClicked: commandLines.copy(modelData.lines)
                    }
                }
            }
        }
    }

    SectionCard {
        title: "Permissions"
        PermissionRowsColumn { presenter: setup }
    }

    SectionCard {
        title: "Start and checks"
        Switch {
            objectName: "startAtLoginSwitch"
            text: "Start Quorla when you log in"
            checked: system.startsAtLogin
            Accessible.name: text
            onToggled: system.startsAtLogin = checked
        }
        InlineNotice {
            Layout.fillWidth: true
            visible: text.length > 0
            text: system.startsAtLoginMessage
        }
        RowLayout {
            Button {
                objectName: "runChecksButton"
                text: "Run checks"
                enabled: !system.checking
                Accessible.name: text
                onClicked: system.runChecks()
            }
            Label {
                Layout.fillWidth: true
                text: system.checksSummary
                color: AppTheme.secondaryText
                wrapMode: Text.Wrap
            }
        }
        Repeater {
            model: system.checks
            delegate: ColumnLayout {
                required property var modelData
                Layout.fillWidth: true
                spacing: 2
                RowLayout {
                    Layout.fillWidth: true
                    StatusPill {
                        text: modelData.status
                        tone: modelData.tone
                    }
                    Label { Layout.fillWidth: true; text: modelData.what; wrapMode: Text.Wrap }
                }
                Label {
                    Layout.fillWidth: true
                    visible: modelData.fix.length > 0
                    text: modelData.fix
                    color: AppTheme.secondaryText
                    wrapMode: Text.Wrap
                }
            }
        }
    }

    OpenAIKeyHelpSheet { id: keyHelp; saveKeyStepText: setup.saveKeyStepText }
}
