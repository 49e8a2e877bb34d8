#include "ModelTest.h"

namespace {

using AppModelStatusTest = ModelTest;

TEST_F(AppModelStatusTest, theIdleTextNamesTheFirstThingMissing)
{
    const struct {
        bool storedKey;
        const char *registrationError;
        PermissionState microphone;
        bool accessibility;
        QString expected;
        bool onboarding;
        const char *installNotice = nullptr; // installed, but blind to some windows
    } cases[] = {
        {false, nullptr, PermissionState::denied, true, "Save your OpenAI API key, then focus a text field and hold Fn or press Fn + Space.", true},
        {true, "No keyboard.", PermissionState::denied, false, "Fn shortcut detection isn't available right now. Fix keyboard input monitoring and relaunch the app.", true},
        {true, nullptr, PermissionState::denied, false, "Enable microphone access in System Settings, then try Fn or Fn + Space again.", true},
        {true, nullptr, PermissionState::notDetermined, false, "Ready to record. Auto-insert is off until Accessibility is available, so transcripts will be copied instead.", false},
        {true, nullptr, PermissionState::authorized, true, "", false},
        {true, nullptr, PermissionState::authorized, true, "Fn shortcut detection isn't available right now. Fix keyboard input monitoring and relaunch the app.", true, "Only X11 windows."},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        fixture.audio->permission = c.microphone;
        fixture.accessibility->trusted = c.accessibility;
        fixture.keyboard->installFailure.reset();
        if (c.registrationError)
            fixture.keyboard->installFailure = QuorlaError::hotkeyRegistrationFailed(c.registrationError);
        fixture.keyboard->installNotice = c.installNotice ? std::optional<QString>(c.installNotice) : std::nullopt;
        stored().setBool("hasStoredAPIKey", c.storedKey); // as an earlier run left it
        AppModel &model = fixture.makeModel();
        model.startAppServices();
        model.startAppServices(); // again as the window appears
        EXPECT_EQ(model.statusMessage(), c.expected);
        EXPECT_EQ(model.requiresOnboarding(), c.onboarding);
    }
}

TEST_F(AppModelStatusTest, askingForAccessibilityReportsTheAnswer)
{
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    model.requestAccessibilityAccess();
    EXPECT_FALSE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.statusMessage(), "Enable Accessibility for Quorla, then quit and reopen the app if access does not update.");

    fixture.accessibility->grantsOnRequest = true;
    model.requestAccessibilityAccess();
    EXPECT_TRUE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.statusMessage(), model.defaultStatusMessage());
}

} // namespace
