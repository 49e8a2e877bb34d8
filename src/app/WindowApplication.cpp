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
    // Each show is acknowledged once it is done: the first after the first frame, a
    // later one at once. A show that arrives after the window closed is not, so
    // Quorla starts the window again once this process has ended.
    bool released = false;
    const auto show = [&] {
        if (released || !model.isReady())
            return;
        const bool first = !window.isOpen();
        window.show();
        if (first && window.window())
            QObject::connect(window.window(), &QQuickWindow::frameSwapped, &model, &RemoteWindowModel::reportShown,
                             Qt::SingleShotConnection);
        else
            model.reportShown();
    };
    QObject::connect(&model, &RemoteWindowModel::ready, &window, show);
    QObject::connect(&model, &RemoteWindowModel::showRequested, &window, show);
    QObject::connect(&model, &RemoteWindowModel::closeRequested, &window, &MainWindowController::close);
    QObject::connect(&model, &RemoteWindowModel::linkLost, &app, &QGuiApplication::quit);
    QObject::connect(&window, &MainWindowController::windowReleased, &app, [&] {
        released = true;
        QGuiApplication::quit();
    });
    show();
    return QGuiApplication::exec();
}
