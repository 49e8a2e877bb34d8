#pragma once

#include "models/PermissionState.h"

#include <QList>
#include <QString>

struct PlatformWords;

// One permission of the setup card, as it reads for the model's current state.
struct OnboardingPermissionRow {
    enum class Action { openMicrophoneSettings,
                        openKeyboardSettings,
                        openAccessibilitySettings,
                        requestAccessibility };

    QString title;
    QString detail;
    QString statusText;
    QString tone; // a StatusPill tone: "success", "warning" or "active"
    QString buttonTitle;
    bool isProminent = false;
    Action action = Action::openMicrophoneSettings;

    friend bool operator==(const OnboardingPermissionRow &, const OnboardingPermissionRow &) = default;
};

// The microphone, keyboard monitoring and accessibility rows, in that order.
// Sentences that say "Fn" name the configured trigger instead, and "Fn + Space" the toggle.
QList<OnboardingPermissionRow> onboardingPermissionRows(PermissionState microphone, bool hasTriggerRegistrationError,
                                                        bool accessibilityGranted, const QString &trigger,
                                                        const QString &toggle, const PlatformWords &words);

// The API key row's pill and the line under its field.
struct CredentialsStatus {
    QString statusText;
    QString tone;
    QString footnote;
};
CredentialsStatus credentialsStatus(bool hasStoredAPIKey, bool keychainLocked, const PlatformWords &words);
