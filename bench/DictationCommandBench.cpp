// Wall time from running `quorla dictation stop` to the transcript in a GTK entry: the
// command's process and D-Bus call, the recording's end, the upload to a local fake
// service that answers at once, and the insertion. Also the command alone (its process
// start to exit). Runs the built quorla in the headless desktop of scripts/desktop-session:
//   bench_dictation_command [ROUNDS] [--wayland] [--quick]
// --wayland: the entry is a native window on the desktop's headless sway, and Quorla takes
// that session's routes (AT-SPI target, data control, virtual keyboard); --quick: a Qt Quick
// field, which takes no text through AT-SPI and so is pasted into.

#include "FakeOpenAIServer.h"
#include "TextTarget.h"
#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/X11Workspace.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

const QStringList keyItem = {QStringLiteral("service"), QStringLiteral("app.quorla.Quorla"), QStringLiteral("account"),
                             QStringLiteral("openai-api-key")};

// Runs a program to its end while the event loop (and so the fake server) keeps going.
int run(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!waitUntil([&] { return process.state() == QProcess::NotRunning; }, 30000))
        process.kill();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QString state()
{
    QProcess status;
    status.start(QStringLiteral(QUORLA_BINARY), {QStringLiteral("dictation"), QStringLiteral("status")});
    status.waitForFinished(10000);
    return QString::fromUtf8(status.readAllStandardOutput()).trimmed();
}

void report(const char *label, std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    std::printf("%-34s n=%zu  min %7.1f  median %7.1f  max %7.1f ms\n", label, samples.size(), samples.front(),
                samples[samples.size() / 2], samples.back());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    const QString wayland = arguments.contains(QStringLiteral("--wayland"))
                              ? qEnvironmentVariable("QUORLA_TEST_WAYLAND_DISPLAY")
                              : QString();
    if (arguments.contains(QStringLiteral("--wayland")) && wayland.isEmpty()) {
        std::fprintf(stderr, "--wayland needs the headless sway of scripts/desktop-session\n");
        return 1;
    }
    QTemporaryDir home;
    const QString speech = home.filePath(QStringLiteral("speech.wav"));
    const QString field = home.filePath(QStringLiteral("field.txt"));
    FakeOpenAIServer server;
    if (run(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), speech, QStringLiteral("hello world")}) != 0
        || run(QStringLiteral("secret-tool"), QStringList{QStringLiteral("store"), QStringLiteral("--label=Quorla")} + keyItem,
               "sk-bench")
               != 0) {
        std::fprintf(stderr, "needs espeak-ng and the keyring of scripts/desktop-session\n");
        return 1;
    }

    QProcess quorla;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), server.baseURL().toString());
    QProcessEnvironment targetEnvironment = QProcessEnvironment::systemEnvironment();
    if (!wayland.isEmpty()) {
        // Quorla's own window stays off screen, so it never takes the focus on sway.
        for (QProcessEnvironment *e : {&environment, &targetEnvironment}) {
            e->insert(QStringLiteral("WAYLAND_DISPLAY"), wayland);
            e->insert(QStringLiteral("SWAYSOCK"), qEnvironmentVariable("QUORLA_TEST_SWAYSOCK"));
            e->insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
            e->remove(QStringLiteral("DISPLAY"));
        }
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        targetEnvironment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
        targetEnvironment.insert(QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland"));
    }
    quorla.setProcessEnvironment(environment);
    quorla.start(QStringLiteral(QUORLA_BINARY), {});
    // Its window first, so that it does not take the focus from the entry afterwards.
    const bool up = waitUntil([] { return state() == QLatin1String("idle"); }, 20000)
                 && (!wayland.isEmpty() || waitUntil([] {
                        return run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                               QStringLiteral("--name"), QStringLiteral("^Quorla$")})
                            == 0;
                    },
                                                     20000));
    std::unique_ptr<Workspace> workspace;
    if (wayland.isEmpty())
        workspace = std::make_unique<X11Workspace>();
    else
        workspace = std::make_unique<AtSpiWorkspace>(nullptr);
    const bool quick = arguments.contains(QStringLiteral("--quick"));
    TextTarget entry(*workspace, quick ? QStringLiteral(QUORLA_TEXT_TARGET) : QStringLiteral("/usr/bin/python3"),
                     quick ? QStringList{QStringLiteral("quick"), field, QString()}
                           : QStringList{QStringLiteral(QUORLA_GTK_TARGET), field, QString()},
                     targetEnvironment);

    std::vector<double> toText, command;
    for (int round = 0; up && entry.application() && round < rounds; ++round) {
        const QString transcript = QStringLiteral("Round %1.").arg(round);
        server.setReply("/v1/audio/transcriptions", FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(transcript)));
        run(QStringLiteral(QUORLA_BINARY), {QStringLiteral("dictation"), QStringLiteral("start")});
        if (!waitUntil([] { return state() == QLatin1String("recording"); }, 10000))
            break;
        run(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), speech});

        QElapsedTimer clock;
        clock.start();
        QProcess stop;
        stop.start(QStringLiteral(QUORLA_BINARY), {QStringLiteral("dictation"), QStringLiteral("stop")});
        double commandMs = -1;
        const bool arrived = waitUntil(
            [&] {
                if (commandMs < 0 && stop.state() == QProcess::NotRunning)
                    commandMs = double(clock.nsecsElapsed()) / 1e6;
                return fileContents(field).endsWith(transcript.toUtf8());
            },
            30000);
        if (!arrived)
            break;
        toText.push_back(double(clock.nsecsElapsed()) / 1e6);
        stop.waitForFinished(10000);
        command.push_back(commandMs >= 0 ? commandMs : double(clock.nsecsElapsed()) / 1e6);
        waitUntil([] { return state() == QLatin1String("idle"); }, 10000);
    }

    quorla.terminate();
    quorla.waitForFinished(5000);
    run(QStringLiteral("secret-tool"), QStringList{QStringLiteral("clear")} + keyItem);
    if (toText.size() != size_t(rounds)) {
        std::fprintf(stderr, "a dictation did not arrive (%zu of %d); the field holds \"%s\"\n", toText.size(), rounds,
                     fileContents(field).constData());
        return 1;
    }
    report("`dictation stop` to text in field", toText);
    report("`dictation stop` process alone", command);
    return 0;
}
