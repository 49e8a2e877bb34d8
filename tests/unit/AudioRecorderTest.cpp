#include "FakeAudioCapture.h"

#include "services/AudioRecorder.h"
#include "support/PlatformError.h"

#include <QCoro/QCoroTask>
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
    QTemporaryDir directory;
    std::shared_ptr<FakeAudioCapture> capture = std::make_shared<FakeAudioCapture>();
    AudioRecorder recorder{capture, directory.filePath("tmp/Quorla")};
};

TEST_F(AudioRecorderTest, stopWithoutARecordingThrowsAndCancelDoesNothing)
{
    EXPECT_NO_THROW(recorder.cancelRecording());
    EXPECT_THROW(recorder.stopRecording(), QuorlaError); // the model tells its message
    EXPECT_FALSE(QDir(recorder.recordingsDirectory()).exists()); // construction touches no file
}

TEST_F(AudioRecorderTest, eachRecordingGetsAFreshUpperCaseUuidM4aInTheDirectory)
{
    const QRegularExpression name("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.m4a$");
    recorder.startRecording();
    const auto first = recorder.stopRecording();
    recorder.startRecording();
    const auto second = recorder.stopRecording();
    EXPECT_NE(first.fileURL, second.fileURL);
    for (const auto &recording : {first, second}) {
        const QFileInfo file(recording.fileURL);
        EXPECT_TRUE(name.match(file.fileName()).hasMatch()) << file.fileName().toStdString();
        EXPECT_EQ(file.absolutePath(), QDir(recorder.recordingsDirectory()).absolutePath());
        EXPECT_TRUE(file.exists()); // the caller owns it now
    }
}

TEST_F(AudioRecorderTest, stopReturnsTheDurationAndTheLoudestLevelSeen)
{
    capture->duration = 1.25;
    capture->peakPower = -30.0f;
    recorder.startRecording();
    capture->peakPower = -4.0f;
    QTRY_COMPARE_WITH_TIMEOUT(recorder.maxPeakPower(), -4.0f, 2000); // a meter tick folds it in
    capture->peakPower = -45.0f;
    const auto recording = recorder.stopRecording();
    EXPECT_DOUBLE_EQ(recording.duration, 1.25);
    EXPECT_FLOAT_EQ(recording.maxPeakPower, -4.0f);
    EXPECT_FLOAT_EQ(recorder.maxPeakPower(), -160.0f);
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(AudioRecorderTest, silenceReportsMinus160AndNeverLess)
{
    for (const float level : {-160.0f, -200.0f, -std::numeric_limits<float>::infinity()}) {
        capture->peakPower = level;
        recorder.startRecording();
        EXPECT_FLOAT_EQ(recorder.stopRecording().maxPeakPower, -160.0f) << level;
    }
}

TEST_F(AudioRecorderTest, cancelDeletesTheFileAndGoesIdle)
{
    recorder.startRecording();
    const QString path = capture->currentPath;
    ASSERT_TRUE(QFile::exists(path));
    recorder.cancelRecording();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_FALSE(capture->recording);
}

TEST_F(AudioRecorderTest, aFailedStartLeavesTheRecorderIdle)
{
    capture->startFailure = QuorlaError(QuorlaError::Kind::recordingFailed);
    EXPECT_THROW(recorder.startRecording(), QuorlaError);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_THROW(recorder.stopRecording(), QuorlaError);

    QFile blocker(directory.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    AudioRecorder blocked(capture, blocker.fileName() + "/Quorla");
    capture->startFailure.reset();
    EXPECT_THROW(blocked.startRecording(), PlatformError); // the folder cannot be made
    EXPECT_FALSE(blocked.isRecording());
}

TEST_F(AudioRecorderTest, aRecordingThatBreaksIsReportedAndItsStopThrowsTheFault)
{
    QSignalSpy failed(&recorder, &AudioRecorder::recordingFailed);
    recorder.startRecording();
    const QString path = capture->currentPath;
    capture->breakRecording(std::make_exception_ptr(PlatformError(PlatformError::Domain::file, "full")));
    ASSERT_TRUE(failed.wait(2000));
    EXPECT_THROW(recorder.stopRecording(), PlatformError);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_FALSE(QFile::exists(path));
    recorder.startRecording(); // and the next one works
    EXPECT_NO_THROW(recorder.stopRecording());
}

TEST_F(AudioRecorderTest, theTriggerWarmsTheInputUpAndATapLetsItGo)
{
    recorder.handleTriggerKeyChanged(true);
    EXPECT_TRUE(capture->prepared);
    recorder.handleTriggerKeyChanged(false);
    QTRY_VERIFY_WITH_TIMEOUT(!capture->prepared, 2000);

    // A hold: the recording starts while the input is warm and outlives the key-up.
    recorder.handleTriggerKeyChanged(true);
    recorder.startRecording();
    recorder.handleTriggerKeyChanged(false);
    QTest::qWait(int(AudioRecorder::releaseAfterTriggerUp.count()) * 2);
    EXPECT_TRUE(capture->recording);
    EXPECT_NO_THROW(recorder.stopRecording());
}

TEST_F(AudioRecorderTest, permissionIsAskedForOnlyWhenNotDetermined)
{
    const struct {
        PermissionState state;
        bool allowed;
        int requests;
    } cases[] = {
        {PermissionState::authorized, true, 0}, {PermissionState::denied, false, 0},
        {PermissionState::notDetermined, true, 1},
    };
    for (const auto &c : cases) {
        capture->permission = c.state;
        capture->permissionRequests = 0;
        capture->answerPermission = []() -> QCoro::Task<PermissionState> { co_return PermissionState::authorized; };
        EXPECT_EQ(QCoro::waitFor(recorder.requestPermission()), c.allowed);
        EXPECT_EQ(capture->permissionRequests, c.requests);
        EXPECT_EQ(recorder.permissionState(), c.allowed ? PermissionState::authorized : PermissionState::denied);
    }
}

} // namespace
