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
        return QStringLiteral("Save your OpenAI API key, then focus a text field and hold %1 or press %1 + Space.")
            .arg(trigger);
    if (m_triggerRegistrationError && !m_triggerRegistrationError->isEmpty())
        return m_services.words->triggerUnavailableStatus.arg(trigger);
    if (m_microphonePermissionState == PermissionState::denied)
        return m_services.words->microphoneDeniedStatus.arg(trigger);
    if (!m_accessibilityPermissionGranted)
        return QStringLiteral("Ready to record. Auto-insert is off until Accessibility is available, so "
                              "transcripts will be copied instead.");
    return QString();
}

QString AppModel::recordingStatusMessage(const DictationSession &session) const
{
    const QString language = statusLanguagePart(session.transcriptionLanguage);
    const QString &trigger = m_triggerDisplay;
    switch (session.source) {
    case DictationSource::fnToggle:
        return session.insertionTarget
                 ? QStringLiteral("Recording for %1%2. Press Space or %3 to transcribe.")
                       .arg(statusApplicationName(*session.insertionTarget), language, trigger)
                 : QStringLiteral("Recording%1... press Space or %2 to transcribe.").arg(language, trigger);
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

bool AppModel::requiresOnboarding() const
{
    return !m_apiKey.hasStoredKey || m_microphonePermissionState == PermissionState::denied
        || m_triggerRegistrationError.has_value();
}

void AppModel::openSettingsPane(const QString &anchor)
{
    m_services.workspace->openSettingsPane(anchor);
}
