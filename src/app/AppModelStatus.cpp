// Status lines and permissions.
#include "AppModel.h"

#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "services/AudioRecorder.h"
#include "support/PlatformWords.h"

#include <QPointer>

void AppModel::refreshPermissions(bool refreshInputLanguage)
{
    refreshLocalPermissions(refreshInputLanguage);
    refreshAccessibilityPermission();
}

void AppModel::refreshLocalPermissions(bool refreshInputLanguage)
{
    setMicrophonePermissionState(m_services.audioRecorder->permissionState());
    if (refreshInputLanguage)
        refreshCurrentInputLanguageHint();
}

QCoro::Task<> AppModel::refreshAccessibilityPermission()
{
    const QPointer<AppModel> self(this);
    const auto accessibility = m_services.accessibility;
    const bool trusted = co_await accessibility->isProcessTrusted();
    if (self)
        keepingDefaultStatus([&] { setAccessibilityPermissionGranted(trusted); });
}

QCoro::Task<> AppModel::requestAccessibilityAccess()
{
    const QPointer<AppModel> self(this);
    const auto accessibility = m_services.accessibility;
    const bool trusted = co_await accessibility->requestTrust();
    if (!self)
        co_return;
    setAccessibilityPermissionGranted(trusted);
    setErrorMessage(std::nullopt);
    setStatusMessage(trusted ? defaultStatusMessage() : m_services.words->accessibilityRequestStatus);
}

QString AppModel::defaultStatusMessage() const
{
    const QString &trigger = m_triggerDisplay;
    if (m_apiKey.keychainLocked)
        return m_services.words->credentialStoreLocked;
    if (!m_apiKey.hasStoredKey)
        return QStringLiteral("Save your OpenAI API key, then focus a text field and hold %1 or press %2.")
            .arg(trigger, toggleDisplay());
    if (m_triggerRegistrationError && !m_triggerRegistrationError->isEmpty())
        return m_services.words->triggerUnavailableStatus.arg(trigger);
    if (m_microphonePermissionState == PermissionState::denied)
        return m_services.words->microphoneDeniedStatus.arg(trigger, toggleDisplay());
    if (!m_accessibilityPermissionGranted)
        return QStringLiteral("Ready to record. Auto-insert is off until Accessibility is available, so "
                              "transcripts will be copied instead.");
    return QString();
}

QString AppModel::recordingStatusMessage(const DictationSession &session) const
{
    const QString language = statusLanguagePart(session.transcriptionLanguage);
    const QString &trigger = m_triggerDisplay;
    if (session.live)
        return liveRecordingStatusMessage(session, language);
    switch (session.source) {
    case DictationSource::fnToggle:
        return session.insertionTarget
                 ? QStringLiteral("Recording for %1%2. Press %3 or %4 to transcribe.")
                       .arg(statusApplicationName(*session.insertionTarget), language, toggleStopDisplay(), trigger)
                 : QStringLiteral("Recording%1... press %2 or %3 to transcribe.").arg(language, toggleStopDisplay(), trigger);
    case DictationSource::fnHold:
        return session.insertionTarget
                 ? QStringLiteral("Recording for %1%2. Release %3 to transcribe.")
                       .arg(statusApplicationName(*session.insertionTarget), language, trigger)
                 : QStringLiteral("Recording%1... release %2 to transcribe.").arg(language, trigger);
    case DictationSource::commandHold:
    case DictationSource::commandToggle:
        return session.insertionTarget
                 ? QStringLiteral("Recording for %1%2. Run %3 to transcribe.")
                       .arg(statusApplicationName(*session.insertionTarget), language, commandToFinish(session.source))
                 : QStringLiteral("Recording%1... run %2 to transcribe.").arg(language, commandToFinish(session.source));
    case DictationSource::manual:
        break;
    }
    return QStringLiteral("Recording%1... press Stop & Transcribe when you're done.").arg(language);
}

QString AppModel::liveRecordingStatusMessage(const DictationSession &session, const QString &language) const
{
    QString finish;
    switch (session.source) {
    case DictationSource::fnToggle:
        finish = QStringLiteral("Press %1 or %2").arg(toggleStopDisplay(), m_triggerDisplay);
        break;
    case DictationSource::fnHold:
        finish = QStringLiteral("Release %1").arg(m_triggerDisplay);
        break;
    case DictationSource::commandHold:
    case DictationSource::commandToggle:
        finish = QStringLiteral("Run %1").arg(commandToFinish(session.source));
        break;
    case DictationSource::manual:
        finish = QStringLiteral("Press Stop & Transcribe");
        break;
    }
    return session.insertionTarget
             ? QStringLiteral("Transcribing for %1%2 as you speak. %3 when you're done.")
                   .arg(statusApplicationName(*session.insertionTarget), language, finish)
             : QStringLiteral("Transcribing%1 as you speak. %2 when you're done.").arg(language, finish);
}

bool AppModel::requiresOnboarding() const
{
    return !m_apiKey.hasStoredKey || m_microphonePermissionState == PermissionState::denied
        || m_triggerRegistrationError.has_value();
}

void AppModel::openSettingsPane(const QString &anchor)
{
    m_services.workspace->openSettingsPane(anchor);
}
