#include "CommandLine.h"

#include "AppInfo.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

namespace {

void write(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

const char *const commandsHelp =
    "\nCommands:\n"
    "  transcribe FILE [options]        Transcribe an audio file and print the text.\n"
    "  doctor [--json]                  Check what dictation needs and how to fix it.\n"
    "  dictation start|stop|toggle|cancel|status\n"
    "                                   Control dictation in the running Quorla.\n"
    "\nRun \"quorla COMMAND --help\" for a command's options.\n";

} // namespace

std::optional<int> answeredCommandLine(int &argc, char **argv, LaunchOptions *options)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Dictate into any application: hold the trigger key, speak, release."));
    const QCommandLineOption background(QStringLiteral("background"),
                                        QStringLiteral("Start in the tray without opening the window."));
    // Passed by session managers that restore Quorla; Qt takes it.
    QCommandLineOption session(QStringLiteral("session"), QString(), QStringLiteral("id"));
    session.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({background, session});
    // Not addHelpOption(): its --help-all lists Qt's own options, which this parser refuses.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("See Commands below."),
                                 QStringLiteral("[command]"));

    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty()) {
        const QString problem = parser.positionalArguments().isEmpty()
                                  ? parser.errorText()
                                  : QStringLiteral("Unknown command \"%1\".").arg(parser.positionalArguments().constFirst());
        write(stderr, problem + QStringLiteral("\nTry \"quorla --help\".\n"));
        return 2;
    }
    if (parser.isSet(help)) {
        // The usage line names the program as the application object knows it.
        const QCoreApplication app(argc, argv);
        write(stdout, parser.helpText() + QString::fromUtf8(commandsHelp));
        return 0;
    }
    if (parser.isSet(version)) {
        write(stdout, QStringLiteral("quorla " QUORLA_VERSION "\n"));
        return 0;
    }
    options->background = parser.isSet(background);
    return std::nullopt;
}
