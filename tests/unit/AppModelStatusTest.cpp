#include "ModelTest.h"
#include "services/TranslationLanguageCatalog.h"

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
    } cases[] = {
        {false, nullptr, PermissionState::denied, true,
         "Save your OpenAI API key, then focus a text field and hold Fn or press Fn + Space.", true},
        {true, "No keyboard.", PermissionState::denied, false,
         "Fn shortcut detection isn't available right now. Fix keyboard input monitoring and relaunch the app.", true},
        {true, nullptr, PermissionState::denied, false,
         "Enable microphone access in System Settings, then try Fn or Fn + Space again.", true},
        {true, nullptr, PermissionState::notDetermined, false,
         "Ready to record. Auto-insert is off until Accessibility is available, so transcripts will be copied "
         "instead.",
         false},
        {true, nullptr, PermissionState::authorized, true, "", false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        fixture.audio->permission = c.microphone;
        fixture.accessibility->trusted = c.accessibility;
        fixture.keyboard->installFailure.reset();
        if (c.registrationError)
            fixture.keyboard->installFailure = QuorlaError::hotkeyRegistrationFailed(c.registrationError);
        stored().setBool("hasStoredAPIKey", c.storedKey); // as an earlier run left it
        AppModel &model = fixture.makeModel();
        model.startAppServices();
        EXPECT_EQ(model.statusMessage(), c.expected);
        EXPECT_EQ(model.defaultStatusMessage(), c.expected);
        EXPECT_EQ(model.requiresOnboarding(), c.onboarding);
    }
}

TEST_F(AppModelStatusTest, askingForAccessibilityReportsTheAnswer)
{
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    model.presentError("Old error.");
    model.requestAccessibilityAccess();
    EXPECT_FALSE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.statusMessage(),
              "Enable Accessibility for Quorla, then quit and reopen the app if access does not update.");

    fixture.accessibility->grantsOnRequest = true;
    model.requestAccessibilityAccess();
    EXPECT_TRUE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.statusMessage(), model.defaultStatusMessage());
}

TEST_F(AppModelStatusTest, translationIsSkippedOnlyWhenTheDictationIsAlreadyInTheTarget)
{
    const auto target = [](const char *code) { return std::optional(TranslationLanguage{code, {}}); };
    const auto hint = [](const char *code) { return std::optional(InputLanguageHint{code, {}}); };
    const struct {
        std::optional<TranslationLanguage> target;
        std::optional<InputLanguageHint> hint;
        bool translates;
    } cases[] = {
        {target("de"), hint("de"), false}, {target("de"), hint(" DE\n"), false}, {target("de"), hint("en"), true},
        {target("de"), std::nullopt, true}, {target("de"), hint("deu"), true},    {target("deu"), hint("en"), false},
        {std::nullopt, hint("en"), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(TranslationLanguageCatalog::shouldTranslateTranscript(c.target, c.hint), c.translates)
            << (c.target ? c.target->code.toStdString() : "none") << " from " << (c.hint ? c.hint->code.toStdString() : "none");
}

TEST_F(AppModelStatusTest, theTranslationSummaryFollowsTheStoredCode)
{
    AppModel &model = fixture.makeModel();
    EXPECT_EQ(model.translationLanguageSummary(), "Keep the finished transcript in the original spoken language.");
    model.setTranslationLanguageCode("de");
    EXPECT_EQ(model.translationLanguageSummary(),
              "Translate each finished transcript to German before inserting, copying, and saving. "
              "Quorla skips translation when the detected dictation language already matches.");
}

TEST_F(AppModelStatusTest, anInputSourceChangeRefreshesTheHint)
{
    AppModel &model = fixture.makeModel();
    EXPECT_EQ(model.currentInputLanguageHint(), std::nullopt);
    fixture.inputSource->source = InputSourceInfo{"fr", {}, "French", {"fr"}};
    model.handleInputSourceChange(fixture.now);
    EXPECT_EQ(model.currentInputLanguageHint(), (InputLanguageHint{"fr", "French"}));
}

} // namespace
