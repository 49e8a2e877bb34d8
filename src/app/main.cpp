#include "AppInfo.h"
#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "app/TranscribeCommand.h"
#include "stores/PreferencesStore.h"

#include <QApplication>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QVBoxLayout>
#include <QWidget>

int main(int argc, char *argv[])
{
    // The command line needs no display: decided before any GUI object exists.
    if (argc > 1 && qstrcmp(argv[1], "transcribe") == 0)
        return runTranscribeCommand(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(QUORLA_APP_ID));
    // Closing the window never quits: Quorla keeps listening for the trigger.
    QApplication::setQuitOnLastWindowClosed(false);

    auto preferences = std::make_shared<PreferencesStore>(PreferencesStore::defaultFilePath());
    const PlatformBackends backends = makePlatformBackends(*preferences);
    QNetworkAccessManager network;
    network.setTransferTimeout(60000);

    AppModel model(makeAppServices(backends, preferences, &network));
    model.startAppServices();

    QWidget window;
    window.setWindowTitle(QStringLiteral(QUORLA_APP_NAME));
    auto *layout = new QVBoxLayout(&window);
    auto *status = new QLabel(&window);
    status->setWordWrap(true);
    layout->addWidget(status);
    const auto showStatus = [&] {
        status->setText(model.errorMessage().value_or(model.statusMessage()));
    };
    QObject::connect(&model, &AppModel::statusMessageChanged, &window, showStatus);
    QObject::connect(&model, &AppModel::errorMessageChanged, &window, showStatus);
    showStatus();
    window.resize(480, 160);
    window.show();

    return QApplication::exec();
}
