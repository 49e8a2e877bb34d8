#include "AudioFileProbe.h"
#include "FileSizeLimit.h"
#include "ProcessMaps.h"

#include "platform/linux/QtAudioCapture.h"
#include "services/AudioRecorder.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

// Recordings from the headless desktop's audio server: the virtual microphone "vmic"
// hears whatever is played to the null sink "vsink".

namespace {

QStringList words(const char *line)
{
    return QString::fromLatin1(line).split(u' ');
}

// Its standard output, or nothing when it failed.
std::optional<QByteArray> run(const QString &program, const QStringList &arguments,
                              const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(20000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput();
}

// How many streams record from the audio server right now.
int recordingStreams()
{
    return int(run(QStringLiteral("pactl"), words("list short source-outputs")).value_or(QByteArray()).count('\n'));
}

// Plays a file into the virtual microphone; the event loop (and so a recording) runs meanwhile.
bool play(const QString &wavPath)
{
    QProcess paplay;
    paplay.start(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), wavPath});
    return QTest::qWaitFor([&] { return paplay.state() == QProcess::NotRunning; }, 20000) && paplay.exitCode() == 0;
}

class QtAudioCaptureTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_sounds = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(run(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), speechPath(),
                                                      QStringLiteral("hello world, this is a dictation test")}));
        ASSERT_TRUE(run(QStringLiteral("sox"),
                        words("-n -r 48000 -c 2") + QStringList{beepPath()} + words("synth 0.15 sine 660 vol 0.7")));
    }
    static void TearDownTestSuite() { s_sounds.reset(); }
    static QString speechPath() { return s_sounds->filePath(QStringLiteral("speech.wav")); }
    static QString beepPath() { return s_sounds->filePath(QStringLiteral("beep.wav")); }

    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariableIsEmpty("PULSE_SERVER")) << "needs the headless desktop's audio server";
        ASSERT_EQ(recorder.permissionState(), PermissionState::authorized);
    }

    static inline std::unique_ptr<QTemporaryDir> s_sounds;
    QTemporaryDir directory;
    std::shared_ptr<QtAudioCapture> capture = std::make_shared<QtAudioCapture>();
    AudioRecorder recorder{capture, directory.filePath(QStringLiteral("Quorla"))};
};

// The file's format is AacFileWriter's; here the server's audio reaches it whole.
TEST_F(QtAudioCaptureTest, speechIsRecordedWithItsDurationAndLevel)
{
    recorder.startRecording();
    ASSERT_TRUE(play(speechPath()));
    QTest::qWait(200);
    const auto recording = recorder.stopRecording();

    const auto probe = AudioFileProbe::of(recording.fileURL);
    ASSERT_TRUE(probe);
    EXPECT_TRUE(probe->moovBeforeMdat);
    EXPECT_GT(recording.duration, 1.0);
    EXPECT_NEAR(probe->duration, recording.duration, 0.1);
    EXPECT_GT(recording.maxPeakPower, -30.0f);
}

// A beep played before the recording starts is in it only when the input was warmed up
// by the press that started it, not by an earlier tap.
TEST_F(QtAudioCaptureTest, onlyAudioSinceTheLatestPressReachesTheRecording)
{
    const struct {
        const char *name;
        bool pressBeforeBeep;
        bool tapThenPress;
        bool heard;
    } cases[] = {
        {"press, beep, start", true, false, true},
        {"beep, start: silence", false, false, false},
        {"tap, beep, press, start", true, true, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        if (c.pressBeforeBeep)
            recorder.handleTriggerKeyChanged(true);
        ASSERT_TRUE(play(beepPath()));
        if (c.tapThenPress) {
            QTest::qWait(300);
            recorder.handleTriggerKeyChanged(false);
            recorder.handleTriggerKeyChanged(true); // while the input is still open
        }
        recorder.startRecording();
        QTest::qWait(300);
        const float peak = recorder.stopRecording().maxPeakPower;
        EXPECT_TRUE(c.heard ? peak > -30.0f : peak < -50.0f) << peak;
        QTest::qWait(300); // the beep's tail has left the null sink
    }
}

// An idle Quorla hands FFmpeg back to the system; the next dictation maps it again.
TEST_F(QtAudioCaptureTest, theEncoderIsUnloadedWhenIdleAndLoadedAgainForTheNextRecording)
{
    const auto idling = std::make_shared<QtAudioCapture>(nullptr, QString(), 300);
    AudioRecorder idlingRecorder{idling, directory.filePath(QStringLiteral("Idle"))};
    for (const char *round : {"first", "after an unload"}) {
        SCOPED_TRACE(round);
        idlingRecorder.startRecording();
        ASSERT_TRUE(play(beepPath()));
        const auto recording = idlingRecorder.stopRecording();
        EXPECT_TRUE(AudioFileProbe::of(recording.fileURL));
        EXPECT_GT(recording.maxPeakPower, -30.0f);
        EXPECT_TRUE(idling->isEncoderLoaded()); // the wait starts when the input closes
        EXPECT_TRUE(QTest::qWaitFor([&] { return !idling->isEncoderLoaded(); }, 10000));
        EXPECT_FALSE(isMappedHere("libavcodec"));
        QTest::qWait(300); // the beep's tail has left the null sink
    }
}

TEST_F(QtAudioCaptureTest, aDiskThatFillsUpEndsTheRecordingWithAFileErrorAndNoFile)
{
    QSignalSpy failed(&recorder, &AudioRecorder::recordingFailed);
    {
        const FileSizeLimit limit(4 * 1024); // about a second of speech
        recorder.startRecording();
        play(speechPath()); // silence would take minutes to fill it
    }
    ASSERT_TRUE(failed.count() == 1 || failed.wait(10000));
    EXPECT_EQ(failed.count(), 1);
    try {
        recorder.stopRecording();
        FAIL() << "expected a PlatformError";
    } catch (const PlatformError &error) {
        EXPECT_EQ(error.domain(), PlatformError::Domain::file);
    }
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_TRUE(QDir(recorder.recordingsDirectory()).entryList(QDir::Files).isEmpty());
}

TEST_F(QtAudioCaptureTest, cancelLeavesNoFileAndATapClosesTheInput)
{
    recorder.startRecording();
    QTest::qWait(200);
    recorder.cancelRecording();
    EXPECT_TRUE(QDir(recorder.recordingsDirectory()).entryList(QDir::Files).isEmpty());

    const int otherStreams = recordingStreams(); // the virtual microphone records its sink
    recorder.handleTriggerKeyChanged(true);
    EXPECT_EQ(recordingStreams(), otherStreams + 1);
    recorder.handleTriggerKeyChanged(false);
    QTest::qWait(int(AudioRecorder::releaseAfterTriggerUp.count()) + 200);
    EXPECT_EQ(recordingStreams(), otherStreams); // the microphone is not kept open after a tap
    recorder.startRecording(); // opens the input afresh
    QTest::qWait(200);
    EXPECT_NO_THROW(recorder.stopRecording());
}

// ---- faults, each in a process of its own so it can have its own audio server

QProcessEnvironment environmentFor(const QString &server, const QString &configDirectory)
{
    const QString clientConfig = QDir(configDirectory).filePath(QStringLiteral("client.conf"));
    QFile file(clientConfig);
    if (file.open(QIODevice::WriteOnly)) // never start a server of its own
        file.write("autospawn = no\n");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PULSE_SERVER"), server);
    environment.insert(QStringLiteral("PULSE_CLIENTCONFIG"), clientConfig);
    return environment;
}

QString runHelper(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess helper;
    helper.setProcessEnvironment(environment);
    helper.start(QStringLiteral(QUORLA_AUDIO_CAPTURE_HELPER), arguments);
    if (!helper.waitForFinished(30000)) {
        helper.kill();
        helper.waitForFinished();
        return QStringLiteral("hung");
    }
    return QString::fromUtf8(helper.readAllStandardOutput()).trimmed();
}

TEST(QtAudioCaptureFaults, withNoAudioServerPermissionIsDeniedAndStartFailsWithoutHanging)
{
    QTemporaryDir directory;
    const QString output = runHelper(
        {QStringLiteral("no-server"), directory.filePath(QStringLiteral("Quorla"))},
        environmentFor(QStringLiteral("unix:%1/no-such-socket").arg(directory.path()), directory.path()));
    EXPECT_EQ(output, QStringLiteral("permission=denied start=recordingFailed leftovers=0"));
}

// A PulseAudio server of the test's own, with a virtual microphone, that the test may kill.
struct PrivateAudioServer {
    PrivateAudioServer()
    {
        const QString runtime = directory.filePath(QStringLiteral("pulse"));
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QFile script(directory.filePath(QStringLiteral("server.pa")));
        if (!script.open(QIODevice::WriteOnly))
            return;
        script.write(QStringLiteral(
                         "load-module module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0 "
                         "socket=%1/native\n"
                         "load-module module-null-sink sink_name=vsink rate=48000 channels=2\n"
                         "load-module module-remap-source source_name=vmic master=vsink.monitor channels=1\n"
                         "set-default-sink vsink\nset-default-source vmic\n")
                         .arg(runtime)
                         .toUtf8());
        script.close();
        environment = environmentFor(QStringLiteral("unix:%1/native").arg(runtime), directory.path());
        QProcessEnvironment serverEnvironment = environment;
        serverEnvironment.insert(QStringLiteral("XDG_RUNTIME_DIR"), directory.path());
        for (const QString &name : words("PULSE_RUNTIME_PATH PULSE_STATE_PATH XDG_CONFIG_HOME"))
            serverEnvironment.insert(name, runtime);
        // Off the session bus: the desktop's own server already holds its name there.
        serverEnvironment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        serverEnvironment.remove(QStringLiteral("DISPLAY"));
        server.setProcessEnvironment(serverEnvironment);
        server.start(QStringLiteral("pulseaudio"),
                     words("-n --daemonize=no --exit-idle-time=-1 --log-target=stderr -F") << script.fileName());
        const auto answers = [this] { return run(QStringLiteral("pactl"), words("info"), environment).has_value(); };
        ready = QTest::qWaitFor(answers, 20000);
        // An idle null sink runs in long blocks; a silent stream keeps its monitor flowing.
        keepAlive.setProcessEnvironment(environment);
        keepAlive.start(QStringLiteral("pacat"), words("--playback --raw -d vsink /dev/zero"));
    }
    ~PrivateAudioServer()
    {
        for (QProcess *process : {&keepAlive, &server}) {
            process->kill();
            process->waitForFinished(5000);
        }
    }

    QTemporaryDir directory;
    QProcessEnvironment environment; // for its clients
    QProcess server;
    QProcess keepAlive;
    bool ready = false;
};

// With the sink goes its monitor and the microphone on it, so the server has no input
// left to move the stream to (with one left, it moves it and the recording goes on).
TEST(QtAudioCaptureFaults, losingTheServerOrTheMicrophoneMidRecordingEndsItWithAnErrorAndNoFile)
{
    for (const QString &fault : words("server-killed device-removed")) {
        SCOPED_TRACE(fault.toStdString());
        PrivateAudioServer audio;
        ASSERT_TRUE(audio.ready) << audio.server.readAllStandardError().toStdString();
        QTemporaryDir directory;
        const QString output = runHelper(
            {fault, directory.filePath(QStringLiteral("Quorla")), QString::number(audio.server.processId())},
            audio.environment);
        EXPECT_TRUE(output.startsWith(QStringLiteral("stop=platformError("))
                    && output.endsWith(QStringLiteral(") recording=0 leftovers=0")))
            << output.toStdString();
    }
}

} // namespace
