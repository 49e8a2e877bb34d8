#include "WindowApplication.h"

#include "AppInfo.h"
#include "app/MainWindowController.h"
#include "app/RemoteWindowModel.h"

#include <QGuiApplication>
#include <QLocalSocket>
#include <QQuickWindow>
#include <cstdio>

int runWindowApplication(int argc, char *argv[], int linkDescriptor)
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(QUORLA_APP_ID));
    // The window's release ends the process, after the scene is gone.
    QGuiApplication::setQuitOnLastWindowClosed(false);

    auto *socket = new QLocalSocket;
    if (!socket->setSocketDescriptor(linkDescriptor)) {
        std::fprintf(stderr, "quorla: the window has no link to Quorla\n");
        delete socket;
        return 1;
    }
    RemoteWindowModel model(socket);
    MainWindowController window(model);
    const auto show = [&] {
        const bool first = !window.isOpen();
        window.show();
        if (first && window.window())
            QObject::connect(window.window(), &QQuickWindow::frameSwapped, &model, &RemoteWindowModel::reportShown,
                             Qt::SingleShotConnection);
    };
    QObject::connect(&model, &RemoteWindowModel::ready, &window, show);
    QObject::connect(&model, &RemoteWindowModel::showRequested, &window, [&] {
        if (model.isReady())
            show();
    });
    QObject::connect(&model, &RemoteWindowModel::closeRequested, &window, &MainWindowController::close);
    QObject::connect(&model, &RemoteWindowModel::linkLost, &app, &QGuiApplication::quit);
    QObject::connect(&window, &MainWindowController::windowReleased, &app, &QGuiApplication::quit);
    if (model.isReady())
        show();
    return QGuiApplication::exec();
}
