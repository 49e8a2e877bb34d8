// Dictation driven by commands rather than the trigger key.
#include "AppModel.h"

#include "services/AudioRecorder.h"

QCoro::Task<> AppModel::commandPressToTalkBegan()
{
    m_isCommandRecordingRequested = true;
    if (!m_isBusy && !m_isRecording)
        co_await startRecording(DictationSource::commandHold);
}

QCoro::Task<> AppModel::commandPressToTalkEnded()
{
    // Also drops a start still waiting for microphone access.
    m_isCommandRecordingRequested = false;
    if (m_isRecording)
        co_await stopRecordingAndTranscribe();
}

QCoro::Task<> AppModel::commandToggleRecordingRequested()
{
    if (m_isRecording) {
        co_await commandPressToTalkEnded();
        co_return;
    }
    m_isCommandRecordingRequested = true;
    if (!m_isBusy)
        co_await startRecording(DictationSource::commandToggle);
}

void AppModel::cancelRecording()
{
    m_isCommandRecordingRequested = false;
    if (!m_isRecording || m_isBusy)
        return;
    discardRecording();
    setStatusMessage(QStringLiteral("Dictation canceled. Nothing was sent."));
}

void AppModel::discardRecording()
{
    m_services.audioRecorder->cancelRecording();
    m_activeSession.reset();
    m_lastRecordingStartedAt.reset();
    setIsRecording(false);
    setErrorMessage(std::nullopt);
}
