#include "ModelFixture.h"

#include "support/PlatformWords.h"
#include "views/onboarding/OnboardingPermissionRow.h"
#include "views/onboarding/OnboardingPresenter.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

using Action = OnboardingPermissionRow::Action;

OnboardingPermissionRow row(int index, PermissionState microphone, bool triggerError, bool accessibility)
{
    return onboardingPermissionRows(microphone, triggerError, accessibility, QStringLiteral("Fn"),
                                    PlatformWords::macOS())
        .at(index);
}

TEST(OnboardingRows, microphoneForEachState)
{
    const auto authorized = row(0, PermissionState::authorized, false, true);
    EXPECT_EQ(authorized, (OnboardingPermissionRow{
                              "Microphone", "Granted. Quorla can record audio when you hold Fn or press Fn + Space.",
                              "Ready", "success", "Open Settings", false, Action::openMicrophoneSettings}));
    const auto denied = row(0, PermissionState::denied, false, true);
    EXPECT_EQ(denied, (OnboardingPermissionRow{
                          "Microphone", "Enable microphone access in System Settings before recording dictation.",
                          "Needs attention", "warning", "Open Settings", true, Action::openMicrophoneSettings}));
    const auto notDetermined = row(0, PermissionState::notDetermined, false, true);
    EXPECT_EQ(notDetermined.statusText, QStringLiteral("Asked on first record"));
    EXPECT_EQ(notDetermined.detail, QStringLiteral("Quorla will ask the first time you start recording, or you can "
                                                   "allow it now in System Settings."));
    EXPECT_FALSE(notDetermined.isProminent);
}

TEST(OnboardingRows, keyboardMonitoringFollowsTheRegistrationError)
{
    EXPECT_EQ(row(1, PermissionState::authorized, false, true),
              (OnboardingPermissionRow{"Keyboard monitoring",
                                       "Granted. Quorla can detect Fn and Fn + Space while you work in other apps.",
                                       "Ready", "success", "Open Settings", false, Action::openKeyboardSettings}));
    EXPECT_EQ(row(1, PermissionState::authorized, true, true),
              (OnboardingPermissionRow{"Keyboard monitoring",
                                       "Required so Quorla can detect Fn and Fn + Space while you work in other apps.",
                                       "Needs attention", "warning", "Open Settings", false,
                                       Action::openKeyboardSettings}));
}

TEST(OnboardingRows, missingAccessibilityIsInsertOffNotAWarning)
{
    EXPECT_EQ(row(2, PermissionState::authorized, false, true),
              (OnboardingPermissionRow{
                  "Accessibility",
                  "Granted. Quorla can insert the finished transcript back into the app you started from.", "Ready",
                  "success", "Open Settings", false, Action::openAccessibilitySettings}));
    const auto off = row(2, PermissionState::authorized, false, false);
    EXPECT_EQ(off, (OnboardingPermissionRow{"Accessibility",
                                            "Optional for auto-insert. Recording still works; transcripts stay in "
                                            "Quorla and are copied.",
                                            "Insert off", "active", "Grant Access", false,
                                            Action::requestAccessibility}));
}

TEST(OnboardingRows, onlyTheDeniedMicrophoneIsProminent)
{
    for (const auto &r : onboardingPermissionRows(PermissionState::denied, true, false, QStringLiteral("Fn"),
                                                  PlatformWords::macOS()))
        EXPECT_EQ(r.isProminent, r.title == QLatin1String("Microphone")) << r.title.toStdString();
}

TEST(OnboardingRows, sentencesNameTheConfiguredTrigger)
{
    const auto rows = onboardingPermissionRows(PermissionState::authorized, false, true, QStringLiteral("Right Ctrl"),
                                               PlatformWords::linuxDesktop());
    EXPECT_EQ(rows[0].detail,
              QStringLiteral("Granted. Quorla can record audio when you hold Right Ctrl or press Right Ctrl + Space."));
    EXPECT_FALSE(rows[1].detail.contains(QLatin1String("Fn")));
}

TEST(CredentialsRow, pillAndFootnoteFollowTheStoredKey)
{
    const auto saved = credentialsStatus(true, PlatformWords::macOS());
    EXPECT_EQ(saved.statusText, QStringLiteral("Saved"));
    EXPECT_EQ(saved.tone, QStringLiteral("success"));
    EXPECT_EQ(saved.footnote, QStringLiteral("You can replace or remove it later from Settings."));
    const auto missing = credentialsStatus(false, PlatformWords::macOS());
    EXPECT_EQ(missing.statusText, QStringLiteral("Needs attention"));
    EXPECT_EQ(missing.tone, QStringLiteral("warning"));
    EXPECT_EQ(missing.footnote, QStringLiteral("Stored securely in your macOS Keychain."));
}

TEST(OnboardingPresenter, rowsFollowTheModelAndButtonsReachTheRightPlaces)
{
    ModelFixture fixture;
    fixture.audio->permission = PermissionState::denied;
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    OnboardingPresenter presenter;
    presenter.setModelObject(&model);
    QSignalSpy changed(&presenter, &OnboardingPresenter::permissionsChanged);

    EXPECT_EQ(presenter.permissionRows().at(0).toMap().value(QStringLiteral("statusText")),
              QStringLiteral("Needs attention"));
    fixture.audio->permission = PermissionState::authorized;
    model.refreshPermissions(false);
    EXPECT_GE(changed.count(), 1);
    EXPECT_EQ(presenter.permissionRows().at(0).toMap().value(QStringLiteral("statusText")), QStringLiteral("Ready"));

    presenter.performRowAction(0);
    presenter.performRowAction(1);
    EXPECT_EQ(fixture.workspace->openedPanes,
              (QStringList{QStringLiteral("Privacy_Microphone"), QStringLiteral("Privacy_ListenEvent")}));
    presenter.performRowAction(2);
    EXPECT_EQ(fixture.accessibility->requestCount, 1);
    presenter.performRowAction(7);
    presenter.performRowAction(-1);
    EXPECT_EQ(fixture.workspace->openedPanes.size(), 2);
}

} // namespace
