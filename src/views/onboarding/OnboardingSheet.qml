import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// Setup while it is incomplete: the API key and the three permissions.
Popup {
    id: sheet
    required property QtObject appModel
    signal dismissed()

    objectName: "onboardingSheet"
    modal: true
    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(600, parent ? parent.width - 40 : 600)
    height: Math.min(implicitHeight, parent ? parent.height - 40 : implicitHeight)
    padding: 24
    closePolicy: Popup.CloseOnEscape
    onClosed: dismissed()
    // The key is what setup asks for first: typing goes straight into its field.
    onOpened: if (!appModel.hasStoredAPIKey) credentials.focusKeyField()

    Overlay.modal: Rectangle { color: AppTheme.scrim }

    background: Rectangle {
        color: AppTheme.pageBackground
        radius: 14
        border.width: 1
        border.color: AppTheme.border
    }

    OnboardingPresenter { id: onboarding; objectName: "onboardingPresenter"; model: sheet.appModel }

    contentItem: ScrollView {
        Accessible.role: Accessible.Dialog
        Accessible.name: "Before you start dictating"
        contentWidth: availableWidth
        clip: true
        ColumnLayout {
            width: parent.width
            spacing: 18

            RowLayout {
                Layout.fillWidth: true
                spacing: 12
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 4
                    Text {
                        text: "Before you start dictating"
                        color: AppTheme.heroTitle
                        font.pixelSize: 22
                        font.weight: Font.Bold
                        Accessible.role: Accessible.Heading
                        Accessible.name: text
                    }
                    Text {
                        Layout.fillWidth: true
                        text: "Add your OpenAI key and confirm the permissions Quorla uses to listen and type for you."
                        color: AppTheme.secondaryText
                        wrapMode: Text.Wrap
                    }
                }
                ToolButton {
                    objectName: "closeOnboardingButton"
                    Layout.alignment: Qt.AlignTop
                    icon.source: AppTheme.symbolSource("xmark", AppTheme.secondaryText)
                    Accessible.name: "Close"
                    ToolTip.visible: hovered
                    ToolTip.text: "Close"
                    onClicked: sheet.close()
                }
            }

            SectionCard {
                CompactCredentialsRow {
                    id: credentials
                    appModel: sheet.appModel
                    presenter: onboarding
                    onHelpRequested: keyHelp.open()
                }
                PermissionRowsColumn { presenter: onboarding }
            }

            Text {
                Layout.fillWidth: true
                text: "You can close this for now. If setup is still incomplete, Quorla will show this again the next time you open the app."
                color: AppTheme.secondaryText
                font.pixelSize: 11
                wrapMode: Text.Wrap
            }
        }
    }

    OpenAIKeyHelpSheet { id: keyHelp; saveKeyStepText: onboarding.saveKeyStepText }
}
