// Input language tracking and the translation decision.
#include "AppModel.h"

#include "services/AudioRecorder.h"
#include "services/InputSourceLanguageDetector.h"
#include "services/TranslationLanguageCatalog.h"

#include <QPointer>

void AppModel::refreshCurrentInputLanguageHint()
{
    setCurrentInputLanguageHint(m_services.inputSourceLanguageDetector->currentLanguageHint());
}

void AppModel::startObservingInputSourceChanges()
{
    if (m_isObservingInputSource)
        return;
    m_isObservingInputSource = true;
    m_hadInputSource = m_services.inputSourceLanguageDetector->hasInputSource();
    m_services.inputSourceLanguageDetector->startObservingChanges([model = QPointer<AppModel>(this)] {
        if (!model)
            return;
        QMetaObject::invokeMethod(
            model.data(),
            [model] {
                if (model)
                    model->handleInputSourceChange(model->m_services.now());
            },
            Qt::QueuedConnection);
    });
}

void AppModel::handleInputSourceChange(const QDateTime &now)
{
    refreshCurrentInputLanguageHint();
    // The first source to come into sight (the compositor's first answer, or a first keyboard
    // appearing as a key goes down) is not a switch the trigger could have made.
    if (!std::exchange(m_hadInputSource, m_services.inputSourceLanguageDetector->hasInputSource()))
        return;
    m_lastInputSourceChangeAt = now;
    if (!m_isRecording || !m_activeSession || m_activeSession->source != DictationSource::fnHold)
        return;
    if (!m_lastRecordingStartedAt)
        return;
    if (!isTriggerCausedInputSourceChange(*m_lastRecordingStartedAt, now))
        return;
    // Holding the trigger switched the input source: that press was not meant as dictation.
    m_services.audioRecorder->cancelRecording();
    m_activeSession.reset();
    setIsRecording(false);
    m_lastRecordingStartedAt.reset();
    setStatusMessage(QStringLiteral("Input language changed. Hold %1 again to dictate.").arg(m_triggerDisplay));
}

QString AppModel::translationLanguageSummary() const
{
    if (const auto language = TranslationLanguageCatalog::translationLanguage(m_translationLanguageCode))
        return QStringLiteral("Translate each finished transcript to %1 before inserting, copying, and saving. "
                              "Quorla skips translation when the detected dictation language already matches.")
            .arg(language->displayName);
    return QStringLiteral("Keep the finished transcript in the original spoken language.");
}
