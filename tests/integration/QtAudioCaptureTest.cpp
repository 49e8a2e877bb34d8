#include "AudioFileProbe.h"

#include "platform/linux/QtAudioCapture.h"
#include "services/AudioRecorder.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// Speech played to the headless desktop's null sink "vsink" is what its virtual
// microphone hears; the recording holds it whole (AacFileWriterTest checks the format),
// after the audio heard since the warm-up, which its duration leaves out,
// and a tap gets all of it up to its end at the rate it asks for.
TEST(QtAudioCapture, speechIsRecordedToAnAacFileWithItsDurationAndLevel)
{
    ASSERT_FALSE(qEnvironmentVariableIsEmpty("PULSE_SERVER")) << "needs the headless desktop's audio server";
    QTemporaryDir directory;
    const QString speech = directory.filePath(QStringLiteral("speech.wav"));
    ASSERT_EQ(QProcess::execute(QStringLiteral("espeak-ng"),
                                {QStringLiteral("-w"), speech, QStringLiteral("hello world, this is a dictation test")}),
              0);
    AudioRecorder recorder{std::make_shared<QtAudioCapture>(), directory.filePath(QStringLiteral("Quorla"))};
    ASSERT_EQ(recorder.permissionState(), PermissionState::authorized);

    recorder.warmUp();
    QTest::qWait(1000);
    qint64 tapped = 0;
    recorder.startRecording({24000, [&tapped](auto samples) { tapped += qint64(samples.size()); }});
    QProcess paplay; // the event loop, and so the recording, runs while it plays
    paplay.start(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), speech});
    ASSERT_TRUE(QTest::qWaitFor([&] { return paplay.state() == QProcess::NotRunning; }, 20000));
    QTest::qWait(200);
    recorder.endPcmTap(); // the release: the tap has had everything, and gets no more
    const double recordedAtRelease = recorder.capture().currentTime();
    QTest::qWait(100);
    const auto recording = recorder.stopRecording();

    EXPECT_GT(recording.duration, 1.0);
    EXPECT_NEAR(probedAudioFile(recording.fileURL).value("duration").toDouble() - recording.duration, QtAudioCapture::preRollMilliseconds / 1000.0, 0.1);
    EXPECT_GT(recording.maxPeakPower, -30.0f);
    EXPECT_NEAR(double(tapped) / 24000 - recordedAtRelease, QtAudioCapture::preRollMilliseconds / 1000.0, 0.01);
    EXPECT_GT(recording.duration, recordedAtRelease);
}

} // namespace
