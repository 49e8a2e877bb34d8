// Runs one recording in a process of its own, so the audio server it talks to can be
// chosen (or be missing) before Qt Multimedia connects. Prints what happened on one
// line and exits 0 when the recorder behaved; used by QtAudioCaptureTest.
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
#include <memory>

namespace {

QString permissionName(PermissionState state)
{
    switch (state) {
    case PermissionState::authorized:
        return QStringLiteral("authorized");
    case PermissionState::denied:
        return QStringLiteral("denied");
    case PermissionState::notDetermined:
        break;
    }
    return QStringLiteral("notDetermined");
}

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

int finish(const QString &line, const QString &directory)
{
    const int leftovers = int(QDir(directory).entryList(QDir::Files).size());
    std::printf("%s leftovers=%d\n", qPrintable(line), leftovers);
    std::fflush(stdout);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 3)
        return 2;
    const QString mode = arguments.at(1);
    const QString directory = arguments.at(2);
    auto capture = std::make_shared<QtAudioCapture>();
    AudioRecorder recorder(capture, directory);

    if (mode == QLatin1String("no-server")) {
        const QString permission = permissionName(recorder.permissionState());
        const QString start = outcomeOf([&] { recorder.startRecording(); });
        return finish(QStringLiteral("permission=%1 start=%2").arg(permission, start), directory);
    }

    const bool removeDevice = mode == QLatin1String("device-removed");
    if ((mode == QLatin1String("server-killed") && arguments.size() == 4) || removeDevice) {
        const QString start = outcomeOf([&] { recorder.startRecording(); });
        if (start != QLatin1String("ok"))
            return finish(QStringLiteral("start=%1").arg(start), directory);
        const pid_t server = removeDevice ? 0 : pid_t(arguments.at(3).toLongLong());
        QString stop = QStringLiteral("noFailureSignal");
        QObject::connect(&recorder, &AudioRecorder::recordingFailed, &app, [&] {
            stop = outcomeOf([&] { recorder.stopRecording(); });
            app.quit();
        });
        QTimer::singleShot(600, &app, [server, removeDevice] {
            if (removeDevice)
                QProcess::execute(QStringLiteral("pactl"),
                                  {QStringLiteral("unload-module"), QStringLiteral("module-null-sink")});
            else
                ::kill(server, SIGKILL);
        });
        QTimer::singleShot(15000, &app, &QCoreApplication::quit);
        app.exec();
        return finish(QStringLiteral("stop=%1 recording=%2").arg(stop).arg(recorder.isRecording()), directory);
    }
    return 2;
}
