#include "ModelFixture.h"

#include "stores/PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

class AppModelPreferencesTest : public ::testing::Test
{
protected:
    void writePreferences(const QByteArray &json)
    {
        QDir().mkpath(QFileInfo(fixture.preferencesPath()).absolutePath());
        QFile file(fixture.preferencesPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
    }
    PreferencesStore stored() const { return PreferencesStore(fixture.preferencesPath()); }

    ModelFixture fixture;
};

TEST_F(AppModelPreferencesTest, firstLaunchUsesTheDefaults)
{
    AppModel &model = fixture.makeModel();
    EXPECT_FALSE(model.shouldPolishTranscript());
    EXPECT_EQ(model.polishPrompt(), QString());
    EXPECT_EQ(model.transcriptionMode(), TranscriptionMode::fast);
    EXPECT_EQ(model.translationLanguageCode(), QString());
    EXPECT_TRUE(model.autoCopyTranscript());
    EXPECT_FALSE(model.showMenuBarIcon());
    EXPECT_EQ(model.typingStatistics(), TypingStatistics{});
    EXPECT_FALSE(model.isBusy());
    EXPECT_FALSE(model.isRecording());
    EXPECT_EQ(model.errorMessage(), std::nullopt);
}

TEST_F(AppModelPreferencesTest, storedValuesAreReadBack)
{
    writePreferences(R"({"shouldPolishTranscript": true, "polishPrompt": "Be brief", "transcriptionMode": "moreAccurate",
        "translationLanguageCode": " DE ", "autoCopyTranscript": false, "showMenuBarIcon": true,
        "typedCharacterCount": 120, "typedWordCount": 20})");
    AppModel &model = fixture.makeModel();
    EXPECT_TRUE(model.shouldPolishTranscript());
    EXPECT_EQ(model.polishPrompt(), QStringLiteral("Be brief"));
    EXPECT_EQ(model.transcriptionMode(), TranscriptionMode::moreAccurate);
    EXPECT_EQ(model.translationLanguageCode(), QStringLiteral("de"));
    EXPECT_FALSE(model.autoCopyTranscript());
    EXPECT_TRUE(model.showMenuBarIcon());
    EXPECT_EQ(model.typingStatistics(), (TypingStatistics{120, 20}));
}

TEST_F(AppModelPreferencesTest, malformedValuesFallBackToTheirDefaults)
{
    writePreferences(R"({"shouldPolishTranscript": "true", "transcriptionMode": "MoreAccurate",
        "translationLanguageCode": "xx", "autoCopyTranscript": 0, "showMenuBarIcon": null, "typedWordCount": "7"})");
    AppModel &model = fixture.makeModel();
    EXPECT_FALSE(model.shouldPolishTranscript());
    EXPECT_EQ(model.transcriptionMode(), TranscriptionMode::fast);
    EXPECT_EQ(model.translationLanguageCode(), QString());
    EXPECT_TRUE(model.autoCopyTranscript());
    EXPECT_FALSE(model.showMenuBarIcon());
    EXPECT_EQ(model.typingStatistics(), TypingStatistics{});
}

TEST_F(AppModelPreferencesTest, aCorruptFileYieldsDefaultsAndIsKeptAside)
{
    writePreferences("{\"autoCopyTranscript\": fal");
    AppModel &model = fixture.makeModel();
    EXPECT_TRUE(model.autoCopyTranscript());
    EXPECT_TRUE(QFile::exists(fixture.preferencesPath() + QStringLiteral(".corrupt")));
}

TEST_F(AppModelPreferencesTest, everyChangeIsPersistedAtOnce)
{
    AppModel &model = fixture.makeModel();
    model.setShouldPolishTranscript(true);
    model.setPolishPrompt(QStringLiteral("  Keep it short  "));
    model.setTranscriptionMode(TranscriptionMode::moreAccurate);
    model.setAutoCopyTranscript(false);
    model.setShowMenuBarIcon(true);
    const PreferencesStore store = stored();
    EXPECT_EQ(store.boolValue(QStringLiteral("shouldPolishTranscript")), true);
    EXPECT_EQ(store.stringValue(QStringLiteral("polishPrompt")), QStringLiteral("  Keep it short  "));
    EXPECT_EQ(store.stringValue(QStringLiteral("transcriptionMode")), QStringLiteral("moreAccurate"));
    EXPECT_EQ(store.boolValue(QStringLiteral("autoCopyTranscript")), false);
    EXPECT_EQ(store.boolValue(QStringLiteral("showMenuBarIcon")), true);
}

TEST_F(AppModelPreferencesTest, aBlankPolishPromptRemovesItsKey)
{
    AppModel &model = fixture.makeModel();
    model.setPolishPrompt(QStringLiteral("Formal"));
    model.setPolishPrompt(QStringLiteral("   \n"));
    EXPECT_FALSE(stored().contains(QStringLiteral("polishPrompt")));
    EXPECT_EQ(model.polishPrompt(), QStringLiteral("   \n"));
    EXPECT_EQ(fixture.makeModel().polishPrompt(), QString());
}

TEST_F(AppModelPreferencesTest, translationCodesAreStoredOnlyInCanonicalForm)
{
    AppModel &model = fixture.makeModel();
    QSignalSpy changes(&model, &AppModel::translationLanguageCodeChanged);

    model.setTranslationLanguageCode(QStringLiteral(" FR "));
    EXPECT_EQ(model.translationLanguageCode(), QStringLiteral("fr"));
    EXPECT_EQ(stored().stringValue(QStringLiteral("translationLanguageCode")), QStringLiteral("fr"));

    model.setTranslationLanguageCode(QStringLiteral("klingon"));
    EXPECT_EQ(model.translationLanguageCode(), QString());
    EXPECT_FALSE(stored().contains(QStringLiteral("translationLanguageCode")));

    model.setTranslationLanguageCode(QStringLiteral("deu"));
    EXPECT_FALSE(stored().contains(QStringLiteral("translationLanguageCode")));
    EXPECT_EQ(model.translationLanguageCode(), QString());
    EXPECT_GE(changes.count(), 4);
}

TEST_F(AppModelPreferencesTest, equalValuesDoNotNotify)
{
    AppModel &model = fixture.makeModel();
    QSignalSpy polish(&model, &AppModel::shouldPolishTranscriptChanged);
    QSignalSpy mode(&model, &AppModel::transcriptionModeChanged);
    model.setShouldPolishTranscript(false);
    model.setTranscriptionMode(TranscriptionMode::fast);
    EXPECT_EQ(polish.count(), 0);
    EXPECT_EQ(mode.count(), 0);
    model.setShouldPolishTranscript(true);
    EXPECT_EQ(polish.count(), 1);
}

TEST_F(AppModelPreferencesTest, startAppServicesInstallsTheMonitorsOnce)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    model.startAppServices();
    EXPECT_EQ(fixture.keyboard->installCount, 1);
    EXPECT_EQ(model.triggerRegistrationError(), std::nullopt);
}

TEST_F(AppModelPreferencesTest, aFailedInstallIsShownAndRetriedOnTheNextStart)
{
    fixture.keyboard->installFailure = QuorlaError::hotkeyRegistrationFailed(QStringLiteral("No keyboard here."));
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    EXPECT_EQ(model.triggerRegistrationError(), QStringLiteral("No keyboard here."));

    fixture.keyboard->installFailure.reset();
    model.startAppServices();
    EXPECT_EQ(fixture.keyboard->installCount, 2);
    EXPECT_EQ(model.triggerRegistrationError(), std::nullopt);
}

} // namespace
