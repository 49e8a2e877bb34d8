#include "support/PlatformWords.h"
#include "views/onboarding/OnboardingPermissionRow.h"

#include <gtest/gtest.h>
#include <ostream>

namespace {

using Action = OnboardingPermissionRow::Action;

struct RowCase {
    int index;
    PermissionState microphone;
    bool triggerError;
    bool accessibility;
    OnboardingPermissionRow expected;
};

void PrintTo(const RowCase &c, std::ostream *out)
{
    *out << "row " << c.index << " " << c.expected.statusText.toStdString();
}

class OnboardingRows : public ::testing::TestWithParam<RowCase> {};

TEST_P(OnboardingRows, readAsTheSetupSheetShowsThem)
{
    const RowCase &c = GetParam();
    EXPECT_EQ(onboardingPermissionRows(c.microphone, c.triggerError, c.accessibility, QStringLiteral("Fn"),
                                       PlatformWords::macOS())
                  .at(c.index),
              c.expected);
}

constexpr auto granted = PermissionState::authorized;
INSTANTIATE_TEST_SUITE_P(
    States, OnboardingRows,
    ::testing::Values(
        RowCase{0, granted, false, true, {"Microphone", "Granted. Quorla can record audio when you hold Fn or press Fn + Space.", "Ready", "success", "Open Settings", false, Action::openMicrophoneSettings}},
        // Only the denied microphone is prominent.
        RowCase{0, PermissionState::denied, true, false, {"Microphone", "Enable microphone access in System Settings before recording dictation.", "Needs attention", "warning", "Open Settings", true, Action::openMicrophoneSettings}},
        RowCase{0, PermissionState::notDetermined, false, true, {"Microphone", "Quorla will ask the first time you start recording, or you can allow it now in System Settings.", "Asked on first record", "active", "Open Settings", false, Action::openMicrophoneSettings}},
        RowCase{1, granted, false, true, {"Keyboard monitoring", "Granted. Quorla can detect Fn and Fn + Space while you work in other apps.", "Ready", "success", "Open Settings", false, Action::openKeyboardSettings}},
        RowCase{1, PermissionState::denied, true, true, {"Keyboard monitoring", "Required so Quorla can detect Fn and Fn + Space while you work in other apps.", "Needs attention", "warning", "Open Settings", false, Action::openKeyboardSettings}},
        RowCase{2, granted, false, true, {"Accessibility", "Granted. Quorla can insert the finished transcript back into the app you started from.", "Ready", "success", "Open Settings", false, Action::openAccessibilitySettings}},
        // Missing accessibility turns insertion off; it is no warning.
        RowCase{2, PermissionState::denied, true, false, {"Accessibility", "Optional for auto-insert. Recording still works; transcripts stay in Quorla and are copied.", "Insert off", "active", "Grant Access", false, Action::requestAccessibility}}));

TEST(OnboardingRows, sentencesNameTheConfiguredTrigger)
{
    const auto rows = onboardingPermissionRows(granted, false, true, QStringLiteral("Right Ctrl"),
                                               PlatformWords::linuxDesktop());
    EXPECT_EQ(rows[0].detail,
              QStringLiteral("Granted. Quorla can record audio when you hold Right Ctrl or press Right Ctrl + Space."));
    EXPECT_FALSE(rows[1].detail.contains(QLatin1String("Fn")));
}

TEST(CredentialsRow, pillAndFootnoteFollowTheStoredKey)
{
    const auto saved = credentialsStatus(true, PlatformWords::macOS());
    EXPECT_EQ(QStringList({saved.statusText, saved.tone, saved.footnote}),
              QStringList({"Saved", "success", "You can replace or remove it later from Settings."}));
    const auto missing = credentialsStatus(false, PlatformWords::macOS());
    EXPECT_EQ(QStringList({missing.statusText, missing.tone, missing.footnote}),
              QStringList({"Needs attention", "warning", "Stored securely in your macOS Keychain."}));
}

} // namespace
