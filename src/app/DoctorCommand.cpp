#include "DoctorCommand.h"

#include "AppInfo.h"
#include "platform/PlatformBackends.h"
#include "services/Doctor.h"
#include "stores/PreferencesStore.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QTimer>
#include <cstdio>

namespace {

void write(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

QCoro::Task<> examine(Doctor *doctor, bool asJson)
{
    const QList<DoctorCheck> checks = co_await doctor->run();
    const bool works = Doctor::dictationCanWork(checks);
    if (asJson)
        write(stdout, QString::fromUtf8(QJsonDocument(QJsonObject{{QStringLiteral("dictationCanWork"), works},
                                                                  {QStringLiteral("checks"), Doctor::json(checks)}})
                                            .toJson(QJsonDocument::Indented)));
    else
        write(stdout, Doctor::text(checks));
    QCoreApplication::exit(works ? 0 : 1);
}

} // namespace

int runDoctorCommand(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Checks what dictation needs (session, trigger key, accessibility, microphone, keyring, API key, "
        "service) and says how to fix what is wrong. Exits with 0 when dictation can work, 1 otherwise."));
    parser.addPositionalArgument(QStringLiteral("doctor"), QStringLiteral("The command."), QStringLiteral("doctor"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print the checks as JSON."));
    parser.addOption(json);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    parser.addOption(help);
    if (!parser.parse(QCoreApplication::arguments()) || parser.positionalArguments().size() != 1) {
        write(stderr, (parser.errorText().isEmpty() ? QStringLiteral("Unexpected argument.") : parser.errorText())
                          + QStringLiteral("\nTry \"quorla doctor --help\".\n"));
        return 2;
    }
    if (parser.isSet(help)) {
        write(stdout, parser.helpText());
        return 0;
    }

    QNetworkAccessManager network;
    Doctor doctor({makeDesktopProbe(), makeCredentialStore(), makeAudioCapture()}, &network,
                  {PreferencesStore::defaultFilePath()});
    const bool asJson = parser.isSet(json);
    QTimer::singleShot(0, &app, [&doctor, asJson] { examine(&doctor, asJson); });
    return QCoreApplication::exec();
}
