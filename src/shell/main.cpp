#include "AppInfo.h"
#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "app/TranscribeCommand.h"
#include "shell/MainWindowController.h"
#include "shell/SingleInstance.h"
#include "shell/TrayIcon.h"
#include "stores/PreferencesStore.h"

#include <QApplication>
#include <QIcon>
#include <QNetworkAccessManager>

int main(int argc, char *argv[])
{
    // The command line needs no display: decided before any GUI object exists.
    if (argc > 1 && qstrcmp(argv[1], "transcribe") == 0)
        return runTranscribeCommand(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(QUORLA_APP_ID));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral(QUORLA_APP_ID), QIcon(QStringLiteral(":/Quorla/app-icon.svg"))));
    // Closing the window never quits: Quorla keeps listening for the trigger.
    QApplication::setQuitOnLastWindowClosed(false);

    SingleInstance instance(QStringLiteral(QUORLA_APP_ID), QDBusConnection::sessionBus());
    if (instance.claim() == SingleInstance::Role::secondary)
        return instance.activatePrimary() ? 0 : 1;

    auto preferences = std::make_shared<PreferencesStore>(PreferencesStore::defaultFilePath());
    const PlatformBackends backends = makePlatformBackends(*preferences);
    QNetworkAccessManager network;
    network.setTransferTimeout(60000);
    AppModel model(makeAppServices(backends, preferences, &network));

    MainWindowController window(model);
    TrayIcon tray(model);
    QObject::connect(&instance, &SingleInstance::activationRequested, &window, &MainWindowController::show);
    QObject::connect(&tray, &TrayIcon::openRequested, &window, &MainWindowController::show);
    QObject::connect(&tray, &TrayIcon::quitRequested, &app, &QApplication::quit);

    model.startAppServices();
    window.show();
    return QApplication::exec();
}
