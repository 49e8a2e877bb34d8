import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// The main window "Quorla": sidebar, the selected page, and the setup sheet.
ApplicationWindow {
    id: window
    required property QtObject appModel

    title: "Quorla"
    width: 980
    height: 720
    minimumWidth: 780
    minimumHeight: 620
    color: AppTheme.pageBackground
    // The controls draw with the theme's colours, so they match the pages in both schemes.
    // Each group is set on its own: a plain palette.x would overwrite the disabled group too.
    palette.active.window: AppTheme.pageBackground
    palette.active.windowText: AppTheme.primaryText
    palette.active.base: AppTheme.surface
    palette.active.alternateBase: AppTheme.secondarySurface
    palette.active.text: AppTheme.primaryText
    palette.active.button: AppTheme.secondarySurface
    palette.active.buttonText: AppTheme.primaryText
    palette.active.placeholderText: AppTheme.secondaryText
    palette.active.highlight: AppTheme.accent
    palette.active.highlightedText: AppTheme.surface
    palette.active.mid: AppTheme.border
    palette.active.toolTipBase: AppTheme.surface
    palette.active.toolTipText: AppTheme.primaryText
    palette.inactive.window: AppTheme.pageBackground
    palette.inactive.windowText: AppTheme.primaryText
    palette.inactive.base: AppTheme.surface
    palette.inactive.alternateBase: AppTheme.secondarySurface
    palette.inactive.text: AppTheme.primaryText
    palette.inactive.button: AppTheme.secondarySurface
    palette.inactive.buttonText: AppTheme.primaryText
    palette.inactive.placeholderText: AppTheme.secondaryText
    palette.inactive.highlight: AppTheme.accent
    palette.inactive.highlightedText: AppTheme.surface
    palette.inactive.mid: AppTheme.border
    palette.inactive.toolTipBase: AppTheme.surface
    palette.inactive.toolTipText: AppTheme.primaryText
    palette.disabled.window: AppTheme.pageBackground
    palette.disabled.base: AppTheme.surface
    palette.disabled.button: AppTheme.secondarySurface
    palette.disabled.highlight: AppTheme.accentMutedBorder
    palette.disabled.mid: AppTheme.border
    palette.disabled.windowText: AppTheme.disabledText
    palette.disabled.text: AppTheme.disabledText
    palette.disabled.buttonText: AppTheme.disabledText
    palette.disabled.placeholderText: AppTheme.disabledText

    MainWindowPresenter { id: frame; objectName: "mainWindowPresenter"; model: window.appModel }

    menuBar: MenuBar {
        Menu {
            title: "&Quorla"
            Action {
                text: "Check for Updates..."
                onTriggered: frame.checkForUpdates()
            }
            MenuSeparator {}
            Action { text: "Close Window"; shortcut: StandardKey.Close; onTriggered: window.close() }
            Action { text: "Quit"; shortcut: StandardKey.Quit; onTriggered: frame.quit() }
        }
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        SidebarView {
            presenter: frame
            Layout.fillHeight: true
            Layout.preferredWidth: 210
        }
        Rectangle { Layout.fillHeight: true; implicitWidth: 1; color: AppTheme.border }
        StackLayout {
            objectName: "detailStack"
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: frame.selectedIndex
            HomePage { objectName: "homePage"; appModel: window.appModel }
            DictionaryPage { objectName: "dictionaryPage"; appModel: window.appModel }
            SettingsPage { objectName: "settingsPage"; appModel: window.appModel }
        }
    }

    OnboardingSheet {
        appModel: window.appModel
        visible: frame.onboardingPresented
        onDismissed: frame.dismissOnboarding()
    }

    Component.onCompleted: frame.contentAppeared()
}
