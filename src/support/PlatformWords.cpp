#include "PlatformWords.h"

const PlatformWords &PlatformWords::macOS()
{
    static const PlatformWords words{
        .microphonePermissionDenied = QStringLiteral(
            "Microphone access is required for recording. Enable it in System Settings > "
            "Privacy & Security > Microphone."),
        .accessibilityPermissionDenied = QStringLiteral(
            "Accessibility access is required so Quorla can type into other apps. Enable it in "
            "System Settings > Privacy & Security > Accessibility. If it is already enabled, "
            "quit and reopen Quorla."),
        .triggerUnavailableStatus = QStringLiteral(
            "%1 shortcut detection isn't available right now. Fix keyboard input monitoring and "
            "relaunch the app."),
        .microphoneDeniedStatus = QStringLiteral(
            "Enable microphone access in System Settings, then try %1 or %2 again."),
        .accessibilityRequestStatus = QStringLiteral(
            "Enable Accessibility for Quorla, then quit and reopen the app if access does not "
            "update."),
        .monitorOutsideWindowFailure = QStringLiteral(
            "Quorla needs Input Monitoring permission to use %1 and %1 + Space outside this "
            "window. Enable it in System Settings > Privacy & Security > Input Monitoring, then "
            "reopen Quorla."),
        .monitorCaptureSpaceFailure = QStringLiteral(
            "Quorla needs Input Monitoring permission to capture Space for %1 + Space. Enable it "
            "in System Settings > Privacy & Security > Input Monitoring, then reopen Quorla."),
        .apiKeySavedStatus = QStringLiteral("API key saved to Keychain."),
        .credentialSaveFailure = QStringLiteral("Couldn't save the API key to Keychain (status %1)."),
        .credentialUpdateFailure = QStringLiteral("Couldn't update the API key in Keychain (status %1)."),
        .credentialReadFailure = QStringLiteral("Couldn't read the API key from Keychain (status %1)."),
        .credentialCheckFailure = QStringLiteral("Couldn't check Keychain item (status %1)."),
        .credentialDeleteFailure = QStringLiteral("Couldn't remove the saved API key (status %1)."),
        .credentialServiceUnavailable = QString(),
        .credentialUnlockFailure = QStringLiteral("Couldn't unlock Keychain (status %1)."),
        .credentialStoreLocked = QStringLiteral(
            "Keychain is locked, so Quorla can't use the saved API key. Click Unlock Keychain, or "
            "unlock it in Keychain Access."),
        .unlockCredentialStoreAction = QStringLiteral("Unlock Keychain"),
        .credentialStoreUnlockedStatus = QStringLiteral("Keychain unlocked."),
        .credentialStoreStillLockedStatus = QStringLiteral("Keychain is still locked."),
        .followsInputLanguage = QStringLiteral("Follows the current macOS input language."),
        .onboardingMicrophoneDenied = QStringLiteral(
            "Enable microphone access in System Settings before recording dictation."),
        .onboardingMicrophoneNotDetermined = QStringLiteral(
            "Quorla will ask the first time you start recording, or you can allow it now in "
            "System Settings."),
        .onboardingKeyStorage = QStringLiteral("Stored securely in your macOS Keychain."),
        .helpSaveKeyStep = QStringLiteral(
            "Paste the key into the API key field and press Save. Quorla stores it in macOS "
            "Keychain."),
        .triggerCommandOnlyStatus = QString(),
        .noPasteRouteStatus = QString(),
        .clipboardRefusedStatus = QString(),
        .desktopShortcutsNote = QString(),
        .desktopShortcutsInUseNote = QString(),
    };
    return words;
}

const PlatformWords &PlatformWords::linuxDesktop()
{
    static const PlatformWords words{
        .microphonePermissionDenied = QStringLiteral(
            "Microphone access is required for recording. Enable it in Settings > Sound > "
            "Input."),
        .accessibilityPermissionDenied = QStringLiteral(
            "Accessibility access is required so Quorla can type into other apps. Enable it in "
            "Settings > Accessibility. If it is already enabled, quit and reopen Quorla."),
        .triggerUnavailableStatus = QStringLiteral(
            "%1 shortcut detection isn't available right now. Fix keyboard monitoring in your "
            "session and relaunch the app."),
        .microphoneDeniedStatus = QStringLiteral(
            "Enable microphone access in Settings > Sound, then try %1 or %2 again."),
        .accessibilityRequestStatus = QStringLiteral(
            "Enable Accessibility for Quorla, then quit and reopen the apps you type into if "
            "access does not update."),
        .monitorOutsideWindowFailure = QStringLiteral(
            "Quorla needs the X11 keyboard extensions to use %1 and %1 + Space outside this "
            "window. Run Quorla in an X11 session with XInput2, then reopen Quorla."),
        .monitorCaptureSpaceFailure = QStringLiteral(
            "Quorla needs the X11 keyboard extensions to capture Space for %1 + Space. Run "
            "Quorla in an X11 session with XInput2, then reopen Quorla."),
        .apiKeySavedStatus = QStringLiteral("API key saved to the keyring."),
        .credentialSaveFailure = QStringLiteral("Couldn't save the API key to the keyring (status %1)."),
        .credentialUpdateFailure = QStringLiteral("Couldn't update the API key in the keyring (status %1)."),
        .credentialReadFailure = QStringLiteral("Couldn't read the API key from the keyring (status %1)."),
        .credentialCheckFailure = QStringLiteral("Couldn't check keyring item (status %1)."),
        .credentialDeleteFailure = QStringLiteral("Couldn't remove the saved API key (status %1)."),
        .credentialServiceUnavailable = QStringLiteral(
            "No Secret Service is running: start one, for example GNOME Keyring or KeePassXC, and "
            "try again."),
        .credentialUnlockFailure = QStringLiteral("Couldn't unlock the keyring (status %1)."),
        .credentialStoreLocked = QStringLiteral(
            "The keyring is locked, so Quorla can't use the saved API key. Click Unlock Keyring, or "
            "unlock it in your desktop's passwords app."),
        .unlockCredentialStoreAction = QStringLiteral("Unlock Keyring"),
        .credentialStoreUnlockedStatus = QStringLiteral("Keyring unlocked."),
        .credentialStoreStillLockedStatus = QStringLiteral("The keyring is still locked."),
        .followsInputLanguage = QStringLiteral("Follows the current keyboard layout's language."),
        .onboardingMicrophoneDenied = QStringLiteral(
            "Enable microphone access in Settings > Sound before recording dictation."),
        .onboardingMicrophoneNotDetermined = QStringLiteral(
            "Quorla will ask the first time you start recording, or you can check the input now "
            "in Settings > Sound."),
        .onboardingKeyStorage = QStringLiteral("Stored securely in your desktop keyring."),
        .helpSaveKeyStep = QStringLiteral(
            "Paste the key into the API key field and press Save. Quorla stores it in your "
            "desktop keyring."),
        .triggerCommandOnlyStatus = QStringLiteral(
            "This Wayland session doesn't let Quorla watch %1. Bind \"quorla dictation toggle\" to a "
            "key in your desktop's keyboard shortcuts: see Settings > Use another key or a command."),
        .noPasteRouteStatus = QStringLiteral(
            "This Wayland session doesn't let Quorla press keys, so the text stays on the clipboard "
            "and in History. Press Ctrl+V to paste it."),
        .clipboardRefusedStatus = QStringLiteral(
            "This Wayland session doesn't let Quorla set the clipboard from the background, so the "
            "transcript is kept in History, where you can copy it."),
        .desktopShortcutsNote = QStringLiteral(
            "Under Wayland, where the desktop offers global shortcuts, hold Ctrl+Alt+D to dictate "
            "and press Ctrl+Alt+Space to start or stop, or choose other keys in your desktop's "
            "shortcut settings."),
        .desktopShortcutsInUseNote = QStringLiteral(
            "Your desktop's global shortcuts start dictation here: hold %1 to dictate and press %2 to "
            "start or stop. Choose other keys in your desktop's shortcut settings."),
    };
    return words;
}

const PlatformWords &PlatformWords::current()
{
#ifdef Q_OS_MACOS
    return macOS();
#else
    return linuxDesktop();
#endif
}
