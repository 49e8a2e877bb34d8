#include "ModelTest.h"

#include <QSignalSpy>

namespace {

using AppModelPreferencesTest = ModelTest;

TEST_F(AppModelPreferencesTest, storedValuesAreReadBackAndMalformedOnesFallBackToTheDefaults)
{
    const struct {
        const char *name;
        QByteArray preferences;
        bool polish;
        QString prompt;
        TranscriptionMode mode;
        QString translation;
        bool autoCopy, menuBarIcon;
        TypingStatistics statistics;
    } cases[] = {
        {"first launch", "", false, "", TranscriptionMode::fast, "", true, false, {}},
        {"stored", R"({"shouldPolishTranscript": true, "polishPrompt": "Be brief", "transcriptionMode": "moreAccurate",
            "translationLanguageCode": " DE ", "autoCopyTranscript": false, "showMenuBarIcon": true,
            "typedCharacterCount": 120, "typedWordCount": 20})",
         true, "Be brief", TranscriptionMode::moreAccurate, "de", false, true, {120, 20}},
        {"malformed", R"({"shouldPolishTranscript": "true", "transcriptionMode": "MoreAccurate",
            "translationLanguageCode": "xx", "autoCopyTranscript": 0, "showMenuBarIcon": null, "typedWordCount": "7"})",
         false, "", TranscriptionMode::fast, "", true, false, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QFile::remove(fixture.preferencesPath());
        if (!c.preferences.isEmpty())
            writePreferences(c.preferences);
        AppModel &model = fixture.makeModel();
        EXPECT_EQ(model.shouldPolishTranscript(), c.polish);
        EXPECT_EQ(model.polishPrompt(), c.prompt);
        EXPECT_EQ(model.transcriptionMode(), c.mode);
        EXPECT_EQ(model.translationLanguageCode(), c.translation);
        EXPECT_EQ(model.autoCopyTranscript(), c.autoCopy);
        EXPECT_EQ(model.showMenuBarIcon(), c.menuBarIcon);
        EXPECT_EQ(model.typingStatistics(), c.statistics);
        EXPECT_FALSE(model.isBusy() || model.isRecording());
        EXPECT_EQ(model.errorMessage(), std::nullopt);
    }
}

TEST_F(AppModelPreferencesTest, everyChangeIsPersistedAtOnceAndEqualValuesDoNotNotify)
{
    AppModel &model = fixture.makeModel();
    QSignalSpy polish(&model, &AppModel::shouldPolishTranscriptChanged);
    model.setShouldPolishTranscript(false);
    model.setShouldPolishTranscript(true);
    model.setPolishPrompt("  Keep it short  ");
    model.setTranscriptionMode(TranscriptionMode::moreAccurate);
    model.setAutoCopyTranscript(false);
    model.setShowMenuBarIcon(true);
    model.setTranslationLanguageCode(" FR ");
    EXPECT_EQ(polish.count(), 1);
    const PreferencesStore store = stored();
    EXPECT_EQ(store.boolValue("shouldPolishTranscript"), true);
    EXPECT_EQ(store.stringValue("polishPrompt"), "  Keep it short  ");
    EXPECT_EQ(store.stringValue("transcriptionMode"), "moreAccurate");
    EXPECT_EQ(store.boolValue("autoCopyTranscript"), false);
    EXPECT_EQ(store.boolValue("showMenuBarIcon"), true);
    EXPECT_EQ(store.stringValue("translationLanguageCode"), "fr");

    model.setPolishPrompt("   \n"); // blank: the key goes
    model.setTranslationLanguageCode("klingon");
    EXPECT_FALSE(stored().contains("polishPrompt") || stored().contains("translationLanguageCode"));
}

} // namespace
