#include "AudioFileProbe.h"
#include "FileSizeLimit.h"

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

// Recordings from the headless desktop's audio server: the virtual microphone "vmic"
// hears whatever is played to the null sink "vsink".

namespace {

bool run(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment = {})
{
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    return process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// How many streams record from the audio server right now.
int recordingStreams()
{
    QProcess pactl;
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("source-outputs")});
    pactl.waitForFinished(10000);
    return int(pactl.readAllStandardOutput().count('\n'));
}

// Plays a file into the virtual microphone without blocking the event loop.
class Playback
{
public:
    explicit Playback(const QString &wavPath)
    {
        m_process.start(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), wavPath});
    }
    // Keeps the event loop (and so the recording) running until the sound has played out.
    bool waitUntilPlayed()
    {
        return QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, 20000)
               && m_process.exitCode() == 0;
    }

private:
    QProcess m_process;
};

class QtAudioCaptureTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_sounds = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(run(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), speechPath(),
                                                      QStringLiteral("hello world, this is a dictation test")}));
        ASSERT_TRUE(run(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("48000"),
                                                QStringLiteral("-c"), QStringLiteral("2"), beepPath(),
                                                QStringLiteral("synth"), QStringLiteral("0.15"), QStringLiteral("sine"),
                                                QStringLiteral("660"), QStringLiteral("vol"), QStringLiteral("0.7")}));
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

TEST_F(QtAudioCaptureTest, speechBecomesAacLcMono16kHzAt32kbitWithItsLevel)
{
    recorder.startRecording();
    Playback speech(speechPath());
    ASSERT_TRUE(speech.waitUntilPlayed());
    QTest::qWait(200);
    const auto recording = recorder.stopRecording();

    const auto probe = AudioFileProbe::of(recording.fileURL);
    ASSERT_TRUE(probe);
    EXPECT_EQ(probe->codecName, QStringLiteral("aac"));
    EXPECT_EQ(probe->profile, QStringLiteral("LC"));
    EXPECT_EQ(probe->sampleRate, 16000);
    EXPECT_EQ(probe->channels, 1);
    // The encoder aims at 32 kbit/s and settles there over time; on two seconds of
    // espeak's harsh synthetic voice it runs up to a quarter over (so does the ffmpeg
    // command line on the same audio).
    EXPECT_NEAR(probe->bitRate, 32000, 12000);
    EXPECT_TRUE(probe->moovBeforeMdat);
    EXPECT_GT(recording.duration, 1.0);
    EXPECT_NEAR(probe->duration, recording.duration, 0.1);
    EXPECT_GT(recording.maxPeakPower, -30.0f);
}

TEST_F(QtAudioCaptureTest, silenceStaysQuiet)
{
    recorder.startRecording();
    QTest::qWait(800);
    const auto recording = recorder.stopRecording();
    EXPECT_LT(recording.maxPeakPower, -50.0f);
    EXPECT_GT(recording.duration, 0.5);
    EXPECT_NEAR(AudioFileProbe::of(recording.fileURL).value_or(AudioFileProbe{}).duration, recording.duration, 0.1);
}

// A beep played after the trigger went down but before the recording starts is in the
// recording only because the input was warmed up.
TEST_F(QtAudioCaptureTest, audioSinceTheTriggerWentDownReachesTheRecording)
{
    for (const bool triggerDown : {true, false}) {
        if (triggerDown)
            recorder.handleTriggerKeyChanged(true);
        Playback beep(beepPath());
        ASSERT_TRUE(beep.waitUntilPlayed());
        recorder.startRecording();
        QTest::qWait(300);
        const auto recording = recorder.stopRecording();
        if (triggerDown)
            EXPECT_GT(recording.maxPeakPower, -30.0f);
        else
            EXPECT_LT(recording.maxPeakPower, -50.0f);
        QTest::qWait(300); // the beep's tail has left the null sink
    }
}

TEST_F(QtAudioCaptureTest, audioBeforeTheLatestPressIsLeftOut)
{
    recorder.handleTriggerKeyChanged(true); // a tap ...
    Playback beep(beepPath());
    ASSERT_TRUE(beep.waitUntilPlayed());
    QTest::qWait(300);
    recorder.handleTriggerKeyChanged(false);
    recorder.handleTriggerKeyChanged(true); // ... and a hold while the input is still open
    recorder.startRecording();
    QTest::qWait(300);
    EXPECT_LT(recorder.stopRecording().maxPeakPower, -50.0f);
}

TEST_F(QtAudioCaptureTest, aDiskThatFillsUpEndsTheRecordingWithAFileErrorAndNoFile)
{
    QSignalSpy failed(&recorder, &AudioRecorder::recordingFailed);
    {
        const FileSizeLimit limit(4 * 1024); // about a second of speech
        recorder.startRecording();
        Playback speech(speechPath()); // silence would take minutes to fill it
        failed.wait(10000);
        speech.waitUntilPlayed();
    }
    ASSERT_EQ(failed.count(), 1);
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

QString helperPath()
{
    return QStringLiteral(QUORLA_AUDIO_CAPTURE_HELPER);
}

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
    helper.start(helperPath(), arguments);
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
        environmentFor(QStringLiteral("unix:") + directory.filePath(QStringLiteral("no-such-socket")), directory.path()));
    EXPECT_EQ(output, QStringLiteral("permission=denied start=recordingFailed leftovers=0"));
}

// A PulseAudio server of the test's own, with a virtual microphone, that the test may kill.
class PrivateAudioServer
{
public:
    PrivateAudioServer()
    {
        const QString runtime = m_directory.filePath(QStringLiteral("pulse"));
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        m_socket = runtime + QStringLiteral("/native");
        QFile script(m_directory.filePath(QStringLiteral("server.pa")));
        if (!script.open(QIODevice::WriteOnly))
            return;
        script.write(QStringLiteral(
                         "load-module module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0 socket=%1\n"
                         "load-module module-null-sink sink_name=vsink rate=48000 channels=2\n"
                         "load-module module-remap-source source_name=vmic master=vsink.monitor channels=1\n"
                         "set-default-sink vsink\nset-default-source vmic\n")
                         .arg(m_socket)
                         .toUtf8());
        script.close();
        m_environment = environmentFor(server(), m_directory.path());
        QProcessEnvironment serverEnvironment = m_environment;
        serverEnvironment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_directory.path());
        serverEnvironment.insert(QStringLiteral("PULSE_RUNTIME_PATH"), runtime);
        serverEnvironment.insert(QStringLiteral("PULSE_STATE_PATH"), runtime);
        serverEnvironment.insert(QStringLiteral("XDG_CONFIG_HOME"), runtime);
        // Off the session bus: the desktop's own server already holds its name there.
        serverEnvironment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        serverEnvironment.remove(QStringLiteral("DISPLAY"));
        m_server.setProcessEnvironment(serverEnvironment);
        m_server.start(QStringLiteral("pulseaudio"),
                       {QStringLiteral("-n"), QStringLiteral("-F"), script.fileName(), QStringLiteral("--daemonize=no"),
                        QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--log-target=stderr")});
        for (int attempt = 0; attempt < 100 && !m_ready; ++attempt) {
            m_ready = run(QStringLiteral("pactl"), {QStringLiteral("info")}, m_environment);
            if (!m_ready)
                QTest::qWait(100);
        }
        // An idle null sink runs in long blocks; a silent stream keeps its monitor flowing.
        m_keepAlive.setProcessEnvironment(m_environment);
        m_keepAlive.start(QStringLiteral("pacat"), {QStringLiteral("--playback"), QStringLiteral("--raw"),
                                                    QStringLiteral("-d"), QStringLiteral("vsink"),
                                                    QStringLiteral("/dev/zero")});
    }
    ~PrivateAudioServer()
    {
        for (QProcess *process : {&m_keepAlive, &m_server}) {
            process->kill();
            process->waitForFinished(5000);
        }
    }

    [[nodiscard]] bool isReady() const { return m_ready; }
    [[nodiscard]] QString log() { return QString::fromUtf8(m_server.readAllStandardError()); }
    [[nodiscard]] QString server() const { return QStringLiteral("unix:") + m_socket; }
    [[nodiscard]] qint64 processId() const { return m_server.processId(); }
    [[nodiscard]] const QProcessEnvironment &clientEnvironment() const { return m_environment; }

private:
    QTemporaryDir m_directory;
    QString m_socket;
    QProcessEnvironment m_environment;
    QProcess m_server;
    QProcess m_keepAlive;
    bool m_ready = false;
};

TEST(QtAudioCaptureFaults, aServerThatDiesMidRecordingEndsItWithAnErrorAndNoFile)
{
    PrivateAudioServer server;
    ASSERT_TRUE(server.isReady()) << server.log().toStdString();
    QTemporaryDir directory;
    const QString output = runHelper({QStringLiteral("server-killed"), directory.filePath(QStringLiteral("Quorla")),
                                      QString::number(server.processId())},
                                     server.clientEnvironment());
    EXPECT_TRUE(output.startsWith(QStringLiteral("stop=platformError(")) && output.endsWith(QStringLiteral(") recording=0 leftovers=0")))
        << output.toStdString();
}

// With the sink goes its monitor and the microphone on it, so the server has no input
// left to move the stream to (with one left, it moves it and the recording goes on).
TEST(QtAudioCaptureFaults, aMicrophoneThatGoesAwayMidRecordingEndsItWithAnErrorAndNoFile)
{
    PrivateAudioServer server;
    ASSERT_TRUE(server.isReady()) << server.log().toStdString();
    QTemporaryDir directory;
    const QString output = runHelper({QStringLiteral("device-removed"), directory.filePath(QStringLiteral("Quorla"))},
                                     server.clientEnvironment());
    EXPECT_TRUE(output.startsWith(QStringLiteral("stop=platformError(")) && output.endsWith(QStringLiteral(") recording=0 leftovers=0")))
        << output.toStdString();
}

} // namespace
