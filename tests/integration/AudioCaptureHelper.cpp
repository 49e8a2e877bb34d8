// Runs one recording in a process of its own, so the audio server it talks to can be
// chosen (or be missing) before Qt Multimedia connects. Prints what happened on one
// line; used by QtAudioCaptureTest.
//   AudioCaptureHelper no-server DIR
//   AudioCaptureHelper server-killed DIR SERVER_PID
//   AudioCaptureHelper device-removed DIR   (removes every input mid-way)

#include "models/QuorlaError.h"
#include "platform/linux/QtAudioCapture.h"
#include "services/AudioRecorder.h"
#include "support/PlatformError.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

// What a stop (or start) threw, in a word the test can compare.
QString outcomeOf(const std::function<void()> &step)
{
    try {
        step();
        return QStringLiteral("ok");
    } catch (const QuorlaError &error) {
        return error.kind() == QuorlaError::Kind::recordingFailed ? QStringLiteral("recordingFailed")
                                                                  : QStringLiteral("otherQuorlaError");
    } catch (const PlatformError &error) {
        return QStringLiteral("platformError(%1)").arg(error.description());
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString mode = app.arguments().value(1);
    const QString directory = app.arguments().value(2);
    AudioRecorder recorder(std::make_shared<QtAudioCapture>(), directory);
    const auto finish = [&directory](const QString &line) {
        std::printf("%s leftovers=%d\n", qPrintable(line), int(QDir(directory).entryList(QDir::Files).size()));
        std::fflush(stdout); // before the recorder's teardown, which may meet a dead server
        return 0;
    };

    if (mode == u"no-server") {
        const bool denied = recorder.permissionState() == PermissionState::denied;
        const QString permission = denied ? QStringLiteral("denied") : QStringLiteral("other");
        const QString start = outcomeOf([&] { recorder.startRecording(); });
        return finish(QStringLiteral("permission=%1 start=%2").arg(permission, start));
    }
    std::function<void()> fault;
    if (mode == u"server-killed" && app.arguments().size() == 4)
        fault = [server = pid_t(app.arguments().at(3).toLongLong())] { ::kill(server, SIGKILL); };
    else if (mode == u"device-removed")
        fault = [] {
            QProcess::execute(QStringLiteral("pactl"), {QStringLiteral("unload-module"), QStringLiteral("module-null-sink")});
        };
    else
        return 2;

    const QString start = outcomeOf([&] { recorder.startRecording(); });
    if (start != u"ok")
        return finish(QStringLiteral("start=") + start);
    QString stop = QStringLiteral("noFailureSignal");
    QObject::connect(&recorder, &AudioRecorder::recordingFailed, &app, [&] {
        stop = outcomeOf([&] { recorder.stopRecording(); });
        app.quit();
    });
    QTimer::singleShot(600, &app, fault);
    QTimer::singleShot(15000, &app, &QCoreApplication::quit);
    app.exec();
    return finish(QStringLiteral("stop=%1 recording=%2").arg(stop).arg(recorder.isRecording()));
}
