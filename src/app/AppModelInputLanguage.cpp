// Input language tracking and the translation decision.
#include "AppModel.h"

#include "services/AudioRecorder.h"
#include "services/InputSourceLanguageDetector.h"
#include "services/TranslationLanguageCatalog.h"

#include <QPointer>
#include <QRegularExpression>

void AppModel::refreshCurrentInputLanguageHint()
{
    setCurrentInputLanguageHint(m_services.inputSourceLanguageDetector->currentLanguageHint());
}

void AppModel::startObservingInputSourceChanges()
{
    if (m_isObservingInputSource)
        return;
    m_isObservingInputSource = true;
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
    m_lastInputSourceChangeAt = now;
    refreshCurrentInputLanguageHint();
    if (!m_isRecording || !m_activeSession || m_activeSession->source != DictationSource::fnHold)
        return;
    if (!m_lastRecordingStartedAt)
        return;
    const qint64 elapsed = m_lastRecordingStartedAt->msecsTo(now);
    if (elapsed < 0 || elapsed > 500)
        return;
    // Holding the trigger switched the input source: that press was not meant as dictation.
    m_services.audioRecorder->cancelRecording();
    m_activeSession.reset();
    setIsRecording(false);
    m_lastRecordingStartedAt.reset();
    setStatusMessage(QStringLiteral("Input language changed. Hold %1 again to dictate.").arg(m_triggerDisplay));
}

std::optional<TranslationLanguage> AppModel::translationLanguage(const std::optional<QString> &code)
{
    const auto normalized = TranslationLanguageCatalog::normalizedCode(code);
    if (!normalized)
        return std::nullopt;
    const auto &byCode = TranslationLanguageCatalog::languagesByCode();
    const auto found = byCode.constFind(*normalized);
    return found == byCode.constEnd() ? std::nullopt : std::optional(*found);
}

bool AppModel::shouldTranslateTranscript(const std::optional<TranslationLanguage> &target,
                                         const std::optional<InputLanguageHint> &source)
{
    static const QRegularExpression twoLetters(QStringLiteral("^[a-z]{2}$"));
    if (!target)
        return false;
    const QString targetCode = target->code.trimmed().toLower();
    if (!twoLetters.match(targetCode).hasMatch())
        return false;
    if (!source)
        return true;
    const QString sourceCode = source->code.trimmed().toLower();
    if (!twoLetters.match(sourceCode).hasMatch())
        return true;
    return targetCode != sourceCode;
}

QString AppModel::translationLanguageSummary() const
{
    if (const auto language = translationLanguage(m_translationLanguageCode))
        return QStringLiteral("Translate each finished transcript to %1 before inserting, copying, and saving. "
                              "Quorla skips translation when the detected dictation language already matches.")
            .arg(language->displayName);
    return QStringLiteral("Keep the finished transcript in the original spoken language.");
}
