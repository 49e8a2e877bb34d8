#include "DictationCommand.h"

#include "AppInfo.h"
#include "shell/DictationControl.h"
#include "shell/SingleInstance.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <cstdio>

namespace {

constexpr int failureStatus = 1;
constexpr int usageStatus = 2;

void writeLine(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

QString usage()
{
    return QStringLiteral("Usage: quorla dictation start|stop|toggle|cancel|status\n"
                          "\n"
                          "Controls dictation in the running Quorla, for a key bound in your desktop's\n"
                          "settings or for scripts. The text goes to the application that has focus\n"
                          "when dictation starts.\n"
                          "\n")
         + dictationCommandSummary();
}

QDBusMessage callFor(const QString &command)
{
    const QString service = QStringLiteral(QUORLA_APP_ID);
    const QString path = SingleInstance::objectPath(service);
    if (command == QLatin1String("status")) {
        QDBusMessage get = QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                          QStringLiteral("Get"));
        get << DictationControl::interfaceName() << QStringLiteral("State");
        return get;
    }
    const QString method = command.left(1).toUpper() + command.mid(1);
    return QDBusMessage::createMethodCall(service, path, DictationControl::interfaceName(), method);
}

} // namespace

QString dictationCommandSummary()
{
    return QStringLiteral("  quorla dictation start    start dictating, as when the trigger key goes down\n"
                          "  quorla dictation stop     stop and transcribe, as when it is released\n"
                          "  quorla dictation toggle   start dictating, or stop and transcribe\n"
                          "  quorla dictation cancel   stop and throw the recording away unsent\n"
                          "  quorla dictation status   print idle, recording or transcribing\n");
}

int runDictationCommand(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(2);
    const QString command = arguments.value(0);
    if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
        std::fputs(qPrintable(usage()), stdout);
        return 0;
    }
    static const QStringList commands = {QStringLiteral("start"), QStringLiteral("stop"), QStringLiteral("toggle"),
                                         QStringLiteral("cancel"), QStringLiteral("status")};
    if (arguments.size() != 1 || !commands.contains(command)) {
        writeLine(stderr, arguments.isEmpty() ? usage()
                                              : QStringLiteral("quorla dictation: unknown command \"%1\".\n\n%2")
                                                    .arg(arguments.join(u' '), usage()));
        return usageStatus;
    }

    const QString notRunning = QStringLiteral("Quorla is not running. Start it with `quorla`.");
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        writeLine(stderr, notRunning);
        return failureStatus;
    }
    QDBusMessage call = callFor(command);
    // A Quorla that is not running is reported, not started.
    call.setAutoStartService(false);
    int status = failureStatus;
    QDBusPendingCallWatcher watcher(bus.asyncCall(call, 10000));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &app, [&] {
        const QDBusMessage reply = watcher.reply();
        if (reply.type() == QDBusMessage::ReplyMessage) {
            if (command == QLatin1String("status"))
                writeLine(stdout, reply.arguments().value(0).value<QDBusVariant>().variant().toString());
            status = 0;
        } else if (reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
                   || reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")) {
            writeLine(stderr, notRunning);
        } else {
            writeLine(stderr, QStringLiteral("Quorla did not take the command: %1").arg(reply.errorMessage()));
        }
        QCoreApplication::exit(status);
    });
    QCoreApplication::exec();
    return status;
}
