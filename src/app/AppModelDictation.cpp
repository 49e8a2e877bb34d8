// The dictation session: from trigger to inserted text.
#include "AppModel.h"

QCoro::Task<> AppModel::globalPressToTalkBegan()
{
    m_isGlobalTriggerHeld = true;
    co_return;
}

QCoro::Task<> AppModel::globalPressToTalkEnded()
{
    m_isGlobalTriggerHeld = false;
    co_return;
}

QCoro::Task<> AppModel::globalToggleRecordingBegan()
{
    m_isToggleRecordingRequested = true;
    co_return;
}

QCoro::Task<> AppModel::globalToggleRecordingEnded()
{
    m_isToggleRecordingRequested = false;
    co_return;
}

QCoro::Task<> AppModel::startManualRecording()
{
    co_await startRecording(DictationSource::manual);
}

QCoro::Task<> AppModel::startRecording(DictationSource source)
{
    Q_UNUSED(source)
    co_return;
}

QCoro::Task<> AppModel::stopRecordingAndTranscribe()
{
    co_return;
}

bool AppModel::promoteActiveHoldSessionToToggle()
{
    return false;
}

QCoro::Task<InsertionOutcome> AppModel::insertTranscriptIfNeeded(QString transcript,
                                                                 std::optional<DictationSession> session)
{
    Q_UNUSED(transcript)
    Q_UNUSED(session)
    co_return InsertionOutcome::notAttempted();
}

QString AppModel::finalStatusMessage(const std::optional<DictationSession> &session,
                                     const InsertionOutcome &outcome) const
{
    Q_UNUSED(session)
    Q_UNUSED(outcome)
    return QString();
}
