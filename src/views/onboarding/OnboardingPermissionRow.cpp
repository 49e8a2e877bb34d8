#include "OnboardingPermissionRow.h"

#include "support/PlatformWords.h"

namespace {

const QString success = QStringLiteral("success");
const QString warning = QStringLiteral("warning");
// Neither ready nor broken: asked later, or optional.
const QString active = QStringLiteral("active");
const QString ready = QStringLiteral("Ready");
const QString needsAttention = QStringLiteral("Needs attention");
const QString openSettings = QStringLiteral("Open Settings");

OnboardingPermissionRow microphoneRow(PermissionState state, const QString &trigger, const QString &toggle,
                                      const PlatformWords &words)
{
    OnboardingPermissionRow row;
    row.title = QStringLiteral("Microphone");
    row.buttonTitle = openSettings;
    row.action = OnboardingPermissionRow::Action::openMicrophoneSettings;
    switch (state) {
    case PermissionState::authorized:
        row.statusText = ready;
        row.tone = success;
        row.detail = QStringLiteral("Granted. Quorla can record audio when you hold %1 or press %2.").arg(trigger, toggle);
        break;
    case PermissionState::denied:
        row.statusText = needsAttention;
        row.tone = warning;
        row.isProminent = true;
        row.detail = words.onboardingMicrophoneDenied;
        break;
    case PermissionState::notDetermined:
        row.statusText = QStringLiteral("Asked on first record");
        row.tone = active;
        row.detail = words.onboardingMicrophoneNotDetermined;
        break;
    }
    return row;
}

OnboardingPermissionRow keyboardRow(bool hasError, const QString &trigger, const QString &toggle)
{
    OnboardingPermissionRow row;
    row.title = QStringLiteral("Keyboard monitoring");
    row.buttonTitle = openSettings;
    row.action = OnboardingPermissionRow::Action::openKeyboardSettings;
    row.statusText = hasError ? needsAttention : ready;
    row.tone = hasError ? warning : success;
    row.detail = (hasError ? QStringLiteral("Required so Quorla can detect %1 and %2 while you work in other apps.")
                           : QStringLiteral("Granted. Quorla can detect %1 and %2 while you work in other apps."))
                     .arg(trigger, toggle);
    return row;
}

OnboardingPermissionRow accessibilityRow(bool granted)
{
    OnboardingPermissionRow row;
    row.title = QStringLiteral("Accessibility");
    if (granted) {
        row.statusText = ready;
        row.tone = success;
        row.detail = QStringLiteral("Granted. Quorla can insert the finished transcript back into the app you started from.");
        row.buttonTitle = openSettings;
        row.action = OnboardingPermissionRow::Action::openAccessibilitySettings;
    } else {
        // Recording works without it, so this is not a warning.
        row.statusText = QStringLiteral("Insert off");
        row.tone = active;
        row.detail = QStringLiteral(
            "Optional for auto-insert. Recording still works; transcripts stay in Quorla and are copied.");
        row.buttonTitle = QStringLiteral("Grant Access");
        row.action = OnboardingPermissionRow::Action::requestAccessibility;
    }
    return row;
}

} // namespace

QList<OnboardingPermissionRow> onboardingPermissionRows(PermissionState microphone, bool hasTriggerRegistrationError,
                                                        bool accessibilityGranted, const QString &trigger,
                                                        const QString &toggle, const PlatformWords &words)
{
    return {microphoneRow(microphone, trigger, toggle, words), keyboardRow(hasTriggerRegistrationError, trigger, toggle),
            accessibilityRow(accessibilityGranted)};
}

CredentialsStatus credentialsStatus(bool hasStoredAPIKey, bool keychainLocked, const PlatformWords &words)
{
    if (keychainLocked)
        return {QStringLiteral("Locked"), warning, words.credentialStoreLocked};
    if (hasStoredAPIKey)
        return {QStringLiteral("Saved"), success, QStringLiteral("You can replace or remove it later from Settings.")};
    return {needsAttention, warning, words.onboardingKeyStorage};
}
