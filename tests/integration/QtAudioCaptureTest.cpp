#include "AudioFileProbe.h"

#include "platform/linux/QtAudioCapture.h"
#include "services/AudioRecorder.h"

#include <QProcess>
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

TEST_F(QtAudioCaptureTest, aTapClosesTheInputAgain)
{
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

} // namespace
