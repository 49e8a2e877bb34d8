#include "FakeAudioCapture.h"

#include "services/AudioRecorder.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QFileInfo>
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
    const QRegularExpression name("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.m4a$");
    capture->duration = 1.25;
    capture->peakPower = -30.0f;
    recorder.startRecording();
    capture->peakPower = -4.0f;
    QTRY_COMPARE_WITH_TIMEOUT(recorder.maxPeakPower(), -4.0f, 2000); // a meter tick folds it in
    capture->peakPower = -45.0f;
    const auto first = recorder.stopRecording();
    EXPECT_DOUBLE_EQ(first.duration, 1.25);
    EXPECT_FLOAT_EQ(first.maxPeakPower, -4.0f);
    EXPECT_FLOAT_EQ(recorder.maxPeakPower(), -160.0f);

    for (const float silence : {-200.0f, -std::numeric_limits<float>::infinity()}) {
        capture->peakPower = silence;
        recorder.startRecording();
        const auto next = recorder.stopRecording();
        EXPECT_FLOAT_EQ(next.maxPeakPower, -160.0f) << silence;
        EXPECT_NE(next.fileURL, first.fileURL);
    }
    ASSERT_EQ(files().size(), 3); // the caller owns them now
    for (const QString &file : files())
        EXPECT_TRUE(name.match(file).hasMatch()) << file.toStdString();
}

// However a recording ends without one, no file is left and the next one works.
TEST_F(AudioRecorderTest, everyWayOfEndingWithoutARecordingLeavesNoFile)
{
    QSignalSpy failed(&recorder, &AudioRecorder::recordingFailed);
    const struct {
        const char *name;
        std::function<void()> act;
        std::optional<PlatformError::Domain> stopThrows; // nullopt: the "not recording" error
    } cases[] = {
        {"never started", [] {}, std::nullopt},
        {"cancelled", [this] { recorder.startRecording(); recorder.cancelRecording(); }, std::nullopt},
        {"refused by the input",
         [this] {
             capture->startFailure = QuorlaError(QuorlaError::Kind::recordingFailed);
             EXPECT_THROW(recorder.startRecording(), QuorlaError);
             capture->startFailure.reset();
         },
         std::nullopt},
        {"broken mid-way",
         [&] {
             recorder.startRecording();
             capture->breakRecording(std::make_exception_ptr(PlatformError(PlatformError::Domain::file, "full")));
             EXPECT_TRUE(failed.wait(2000));
         },
         PlatformError::Domain::file},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        c.act();
        EXPECT_FALSE(capture->recording);
        if (c.stopThrows)
            EXPECT_THROW(recorder.stopRecording(), PlatformError);
        else
            EXPECT_THROW(recorder.stopRecording(), QuorlaError);
        EXPECT_FALSE(recorder.isRecording());
        EXPECT_TRUE(files().isEmpty());
    }
    recorder.startRecording();
    EXPECT_NO_THROW(recorder.stopRecording());

    QFile blocker(directory.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    AudioRecorder blocked(capture, blocker.fileName() + "/Quorla");
    EXPECT_THROW(blocked.startRecording(), PlatformError); // the folder cannot be made
    EXPECT_FALSE(blocked.isRecording());
}

TEST_F(AudioRecorderTest, theTriggerWarmsTheInputUpAndOnlyATapLetsItGo)
{
    recorder.handleTriggerKeyChanged(true);
    EXPECT_TRUE(capture->prepared);
    recorder.handleTriggerKeyChanged(false);
    QTRY_VERIFY_WITH_TIMEOUT(!capture->prepared, 2000);

    recorder.handleTriggerKeyChanged(true);
    recorder.startRecording();
    recorder.handleTriggerKeyChanged(false);
    QTest::qWait(int(AudioRecorder::releaseAfterTriggerUp.count()) * 2);
    EXPECT_TRUE(capture->recording) << "a hold's recording outlives the key-up";
    EXPECT_NO_THROW(recorder.stopRecording());
}

} // namespace
