#include "support/PlatformWords.h"
#include "views/onboarding/OnboardingPermissionRow.h"

#include <gtest/gtest.h>

namespace {

using Action = OnboardingPermissionRow::Action;
constexpr auto granted = PermissionState::authorized;

TEST(OnboardingRows, readAsTheSetupSheetShowsThem)
{
    const struct {
        int index;
        PermissionState microphone;
        bool triggerError, accessibility;
        OnboardingPermissionRow expected;
    } cases[] = {
        {0, granted, false, true, {"Microphone", "Granted. Quorla can record audio when you hold Fn or press Fn + Space.", "Ready", "success", "Open Settings", false, Action::openMicrophoneSettings}},
        // Only the denied microphone is prominent.
        {0, PermissionState::denied, true, false, {"Microphone", "Enable microphone access in System Settings before recording dictation.", "Needs attention", "warning", "Open Settings", true, Action::openMicrophoneSettings}},
        {0, PermissionState::notDetermined, false, true, {"Microphone", "Quorla will ask the first time you start recording, or you can allow it now in System Settings.", "Asked on first record", "active", "Open Settings", false, Action::openMicrophoneSettings}},
        {1, granted, false, true, {"Keyboard monitoring", "Granted. Quorla can detect Fn and Fn + Space while you work in other apps.", "Ready", "success", "Open Settings", false, Action::openKeyboardSettings}},
        {1, PermissionState::denied, true, true, {"Keyboard monitoring", "Required so Quorla can detect Fn and Fn + Space while you work in other apps.", "Needs attention", "warning", "Open Settings", false, Action::openKeyboardSettings}},
        {2, granted, false, true, {"Accessibility", "Granted. Quorla can insert the finished transcript back into the app you started from.", "Ready", "success", "Open Settings", false, Action::openAccessibilitySettings}},
        // Missing accessibility turns insertion off; it is no warning.
        {2, PermissionState::denied, true, false, {"Accessibility", "Optional for auto-insert. Recording still works; transcripts stay in Quorla and are copied.", "Insert off", "active", "Grant Access", false, Action::requestAccessibility}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(onboardingPermissionRows(c.microphone, c.triggerError, c.accessibility, "Fn", "Fn + Space", PlatformWords::macOS())
                      .at(c.index),
                  c.expected)
            << "row " << c.index << " " << c.expected.statusText.toStdString();
    const auto rows = onboardingPermissionRows(granted, false, true, "Ctrl+Alt+D", "Ctrl+Alt+Space", PlatformWords::linuxDesktop());
    EXPECT_EQ(rows[0].detail, "Granted. Quorla can record audio when you hold Ctrl+Alt+D or press Ctrl+Alt+Space.");
}

TEST(CredentialsRow, pillAndFootnoteFollowTheStoredKey)
{
    const auto saved = credentialsStatus(true, false, PlatformWords::macOS()), missing = credentialsStatus(false, false, PlatformWords::macOS());
    EXPECT_EQ(QStringList({saved.statusText, saved.tone, saved.footnote, missing.statusText, missing.tone, missing.footnote}),
              QStringList({"Saved", "success", "You can replace or remove it later from Settings.", "Needs attention",
                           "warning", "Stored securely in your macOS Keychain."}));
}

} // namespace
