#pragma once

#include <QString>

// Sentences that name a place or facility of the desktop (settings panes, the
// credential store, the keyboard monitoring facility). One table per platform,
// same sentences, same punctuation. "%1" stands for the trigger key's display name, and
// "%2", where a sentence names it, for the toggle's ("Fn + Space").
struct PlatformWords {
    QString microphonePermissionDenied;
    QString accessibilityPermissionDenied;
    QString triggerUnavailableStatus; // %1 = trigger
    QString microphoneDeniedStatus;   // %1 = trigger, %2 = toggle
    QString accessibilityRequestStatus;
    QString monitorOutsideWindowFailure; // %1 = trigger
    QString monitorCaptureSpaceFailure;  // %1 = trigger
    QString apiKeySavedStatus;
    QString credentialSaveFailure;        // %1 = status
    QString credentialUpdateFailure;      // %1 = status
    QString credentialReadFailure;        // %1 = status
    QString credentialCheckFailure;       // %1 = status
    QString credentialDeleteFailure;      // %1 = status
    QString credentialServiceUnavailable; // follows a credential failure when no store runs at all
    QString credentialUnlockFailure;      // %1 = status
    QString credentialStoreLocked;        // what is locked and how to unlock it
    QString unlockCredentialStoreAction;
    QString credentialStoreUnlockedStatus;
    QString credentialStoreStillLockedStatus;
    QString followsInputLanguage;
    QString onboardingMicrophoneDenied;
    QString onboardingMicrophoneNotDetermined;
    QString onboardingKeyStorage;
    QString helpSaveKeyStep;
    // Sessions where the trigger key can't be watched (Wayland without a way to bind keys).
    QString triggerCommandOnlyStatus; // %1 = trigger
    // Sessions where no key can be pressed for Quorla, so nothing is pasted for the user.
    QString noPasteRouteStatus;
    // Sessions where Quorla can't set the clipboard from the background: the copy was refused.
    QString clipboardRefusedStatus;
    QString desktopShortcutsNote;      // the desktop's own shortcuts trigger dictation; empty where none do
    QString desktopShortcutsInUseNote; // they do here: %1 = hold, %2 = toggle, as the desktop names them

    static const PlatformWords &macOS();
    static const PlatformWords &linuxDesktop();
    // The table of the platform this build runs on.
    static const PlatformWords &current();
};
