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
    palette.window: AppTheme.pageBackground
    palette.windowText: AppTheme.primaryText
    palette.base: AppTheme.surface
    palette.alternateBase: AppTheme.secondarySurface
    palette.text: AppTheme.primaryText
    palette.button: AppTheme.secondarySurface
    palette.buttonText: AppTheme.primaryText
    palette.placeholderText: AppTheme.secondaryText
    palette.highlight: AppTheme.accent
    palette.highlightedText: AppTheme.surface
    palette.mid: AppTheme.border
    palette.toolTipBase: AppTheme.surface
    palette.toolTipText: AppTheme.primaryText
    palette.disabled.buttonText: AppTheme.secondaryText
    palette.disabled.text: AppTheme.secondaryText
    palette.disabled.windowText: AppTheme.secondaryText

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
