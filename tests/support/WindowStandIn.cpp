// A window process for WindowProcess's tests: speaks the link like quorla-window and
// acknowledges the first show. A later show is acknowledged, ends the process without
// an answer (a window closing as the show arrives), or crashes, as
// QUORLA_STAND_IN_ON_SHOW says. Each start adds a line to QUORLA_STAND_IN_LOG.
#include "app/RemoteWindowModel.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocalSocket>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QFile log(qEnvironmentVariable("QUORLA_STAND_IN_LOG"));
    if (log.open(QIODevice::Append))
        log.write("started\n");
    log.close();
    const QString onShow = qEnvironmentVariable("QUORLA_STAND_IN_ON_SHOW");

    auto *socket = new QLocalSocket;
    if (argc < 3 || !socket->setSocketDescriptor(std::atoi(argv[2])))
        return 1;
    RemoteWindowModel model(socket);
    QObject::connect(&model, &RemoteWindowModel::ready, &model, &RemoteWindowModel::reportShown);
    QObject::connect(&model, &RemoteWindowModel::showRequested, &app, [&] {
        if (onShow == u"exit")
            QCoreApplication::exit(0);
        else if (onShow == u"crash")
            std::abort();
        else
            model.reportShown();
    });
    QObject::connect(&model, &RemoteWindowModel::closeRequested, &app, &QCoreApplication::quit);
    QObject::connect(&model, &RemoteWindowModel::linkLost, &app, &QCoreApplication::quit);
    if (model.isReady())
        model.reportShown();
    return QCoreApplication::exec();
}
