#include "ModelTest.h"

#include <QSignalSpy>

namespace {

using AppModelPreferencesTest = ModelTest;

TEST_F(AppModelPreferencesTest, storedValuesAreReadBackAndMalformedOnesFallBackToTheDefaults)
{
    const auto state = [](const AppModel &m) {
        return QStringLiteral("polish=%1 prompt=%2 mode=%3 translation=%4 copy=%5 icon=%6 typed=%7/%8 listen=%9")
            .arg(m.shouldPolishTranscript())
            .arg(m.polishPrompt(), rawValue(m.transcriptionMode()), m.translationLanguageCode())
            .arg(m.autoCopyTranscript())
            .arg(m.showMenuBarIcon())
            .arg(qint64(m.typingStatistics().typedCharacterCount))
            .arg(qint64(m.typingStatistics().typedWordCount))
            .arg(m.startListeningOnTriggerDown());
    };
    for (const auto &[preferences, expected] : std::initializer_list<std::pair<QByteArray, QString>>{
             {"", "polish=0 prompt= mode=fast translation= copy=1 icon=0 typed=0/0 listen=1"},
             {R"({"shouldPolishTranscript": true, "polishPrompt": "Be brief", "transcriptionMode": "moreAccurate",
                 "translationLanguageCode": " DE ", "autoCopyTranscript": false, "showMenuBarIcon": true,
                 "typedCharacterCount": 120, "typedWordCount": 20, "startListeningOnTriggerDown": false})",
              "polish=1 prompt=Be brief mode=moreAccurate translation=de copy=0 icon=1 typed=120/20 listen=0"},
             {R"({"shouldPolishTranscript": "true", "transcriptionMode": "MoreAccurate", "translationLanguageCode": "xx",
                 "autoCopyTranscript": 0, "showMenuBarIcon": null, "typedWordCount": "7", "startListeningOnTriggerDown": 0})",
              "polish=0 prompt= mode=fast translation= copy=1 icon=0 typed=0/0 listen=1"}}) {
        QFile::remove(fixture.preferencesPath());
        if (!preferences.isEmpty())
            writePreferences(preferences);
        EXPECT_EQ(state(fixture.makeModel()), expected);
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
    model.setStartListeningOnTriggerDown(false);
    model.setTranslationLanguageCode(" FR ");
    EXPECT_EQ(polish.count(), 1);
    const PreferencesStore store = stored();
    EXPECT_EQ(store.boolValue("shouldPolishTranscript"), true);
    EXPECT_EQ(store.stringValue("polishPrompt"), "  Keep it short  ");
    EXPECT_EQ(store.stringValue("transcriptionMode"), "moreAccurate");
    EXPECT_EQ(store.boolValue("autoCopyTranscript"), false);
    EXPECT_EQ(store.boolValue("showMenuBarIcon"), true);
    EXPECT_EQ(store.boolValue("startListeningOnTriggerDown"), false);
    EXPECT_EQ(store.stringValue("translationLanguageCode"), "fr");

    model.setPolishPrompt("   \n"); // blank: the key goes
    model.setTranslationLanguageCode("klingon");
    EXPECT_FALSE(stored().contains("polishPrompt") || stored().contains("translationLanguageCode"));
}

} // namespace
