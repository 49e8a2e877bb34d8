#include "FakeAudioCapture.h"

#include "services/AudioRecorder.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class AudioRecorderTest : public ::testing::Test
{
protected:
    [[nodiscard]] QStringList files() const { return QDir(recorder.recordingsDirectory()).entryList(QDir::Files); }

    QTemporaryDir directory;
    std::shared_ptr<FakeAudioCapture> capture = std::make_shared<FakeAudioCapture>();
    AudioRecorder recorder{capture, directory.filePath("tmp/Quorla")};
};

TEST_F(AudioRecorderTest, eachRecordingIsAFreshUuidFileWithItsDurationAndLoudestLevel)
{
    capture->duration = 1.25;
    capture->peakPower = -30.0f;
    recorder.startRecording();
    capture->peakPower = -4.0f;
    QTRY_COMPARE_WITH_TIMEOUT(recorder.maxPeakPower(), -4.0f, 2000); // a meter tick folds it in
    capture->peakPower = -45.0f;
    const auto first = recorder.stopRecording();
    EXPECT_DOUBLE_EQ(first.duration, 1.25);
    EXPECT_FLOAT_EQ(first.maxPeakPower, -4.0f);
    capture->peakPower = -std::numeric_limits<float>::infinity();
    recorder.startRecording();
    const auto next = recorder.stopRecording();
    EXPECT_FLOAT_EQ(next.maxPeakPower, -160.0f);
    EXPECT_NE(next.fileURL, first.fileURL);
    const QRegularExpression uuid("^[0-9A-F]{8}-([0-9A-F]{4}-){3}[0-9A-F]{12}\\.m4a$");
    ASSERT_EQ(files().size(), 2); // the caller owns them now
    EXPECT_TRUE(uuid.match(files()[0]).hasMatch() && uuid.match(files()[1]).hasMatch()) << files().join(' ').toStdString();
}

// However a recording ends without one, no file is left and the next one works.
TEST_F(AudioRecorderTest, everyWayOfEndingWithoutARecordingLeavesNoFile)
{
    QSignalSpy failed(&recorder, &AudioRecorder::recordingFailed);
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"never started", [] {}},
        {"cancelled", [this] { recorder.startRecording(); recorder.cancelRecording(); }},
        {"refused by the input", [this] {
             capture->startFailure = QuorlaError(QuorlaError::Kind::recordingFailed);
             EXPECT_THROW(recorder.startRecording(), QuorlaError);
             capture->startFailure.reset();
         }},
        {"broken mid-way", [&] {
             recorder.startRecording();
             capture->breakRecording(std::make_exception_ptr(PlatformError(PlatformError::Domain::file, "full")));
             EXPECT_TRUE(failed.wait(2000));
         }},
    };
    for (const auto &[name, act] : cases) {
        act();
        EXPECT_FALSE(capture->recording) << name;
        EXPECT_ANY_THROW(recorder.stopRecording()) << name;
        EXPECT_TRUE(files().isEmpty()) << name;
    }
    recorder.startRecording();
    EXPECT_NO_THROW(recorder.stopRecording());

    QFile blocker(directory.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    AudioRecorder blocked(capture, blocker.fileName() + "/Quorla");
    EXPECT_THROW(blocked.startRecording(), PlatformError); // the folder cannot be made
    EXPECT_FALSE(blocked.isRecording());
}

} // namespace
