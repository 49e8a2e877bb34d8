#include "AppInfo.h"
#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "shell/DictationCommand.h"
#include "app/CommandLine.h"
#include "app/DoctorCommand.h"
#include "app/TranscribeCommand.h"
#include "shell/DictationControl.h"
#include "shell/HeapTuning.h"
#include "shell/MainWindowController.h"
#include "shell/SingleInstance.h"
#include "shell/TerminationSignals.h"
#include "shell/TrayIcon.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QApplication>
#include <QIcon>
#include <QNetworkAccessManager>
#include <QTimer>

int main(int argc, char *argv[])
{
    // The command line needs no display: decided before any GUI object exists.
    if (argc > 1 && qstrcmp(argv[1], "transcribe") == 0)
        return runTranscribeCommand(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "dictation") == 0)
        return runDictationCommand(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "doctor") == 0)
        return runDoctorCommand(argc, argv);
    LaunchOptions launch;
    if (const auto status = answeredCommandLine(argc, argv, &launch))
        return *status;
    restartWithoutFreedBlockCache(argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(QUORLA_APP_ID));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral(QUORLA_APP_ID), QIcon(QStringLiteral(":/Quorla/app-icon.svg"))));
    // Closing the window never quits: Quorla keeps listening for the trigger.
    QApplication::setQuitOnLastWindowClosed(false);

    SingleInstance instance(QStringLiteral(QUORLA_APP_ID), QDBusConnection::sessionBus());
    const SingleInstance::Role role = instance.claim();
    if (role == SingleInstance::Role::secondary)
        return launch.background || instance.activatePrimary() ? 0 : 1;

    auto preferences = std::make_shared<PreferencesStore>(PreferencesStore::defaultFilePath());
    const PlatformBackends backends = makePlatformBackends(TriggerKey::normalized(preferences->stringValue(PreferenceKeys::triggerKey)));
    QNetworkAccessManager network;
    network.setTransferTimeout(60000);
    AppModel model(makeAppServices(backends, preferences, &network));

    if (role == SingleInstance::Role::primary)
        new DictationControl(model, &instance, QDBusConnection::sessionBus(),
                             SingleInstance::objectPath(QStringLiteral(QUORLA_APP_ID)));
    MainWindowController window(model);
    TrayIcon tray(model);
    QObject::connect(&instance, &SingleInstance::activationRequested, &window, &MainWindowController::show);
    QObject::connect(&tray, &TrayIcon::openRequested, &window, &MainWindowController::show);
    QObject::connect(&tray, &TrayIcon::quitRequested, &app, &QApplication::quit);
    quitOnTerminationSignals();

    model.startAppServices();
    if (!launch.background) {
        // The window's first layout meets the settled setup state, not a guess the keyring
        // answer rewrites while the window lays itself out. A slow keyring delays it 1 s at most.
        const auto showOnce = [&window, shown = std::make_shared<bool>(false)] {
            if (!std::exchange(*shown, true))
                window.show();
        };
        if (model.hasCheckedStoredAPIKey()) {
            showOnce();
        } else {
            QObject::connect(&model, &AppModel::storedAPIKeyChecked, &window, showOnce, Qt::SingleShotConnection);
            QTimer::singleShot(1000, &window, showOnce);
        }
    }
    return QApplication::exec();
}
