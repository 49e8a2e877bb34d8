#include "ModelFixture.h"

#include "AppInfo.h"
#include "models/QuorlaError.h"
#include "stores/PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;

const QString itemKey = QStringLiteral(QUORLA_APP_ID "/openai-api-key");
const QString marker = QStringLiteral("hasStoredAPIKey");

class AppModelAPIKeyTest : public ::testing::Test
{
protected:
    void writePreferences(const QByteArray &json)
    {
        QDir().mkpath(QFileInfo(fixture.preferencesPath()).absolutePath());
        QFile file(fixture.preferencesPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
    }
    std::optional<bool> storedMarker() const { return PreferencesStore(fixture.preferencesPath()).boolValue(marker); }
    bool storedMarkerExists() const { return PreferencesStore(fixture.preferencesPath()).contains(marker); }
    QString missingKeyMessage(AppModel &model)
    {
        try {
            (void)model.validatedAPIKey();
        } catch (const QuorlaError &error) {
            EXPECT_EQ(error.kind(), QuorlaError::Kind::missingAPIKey);
            return model.localizedMessage(error);
        }
        return QStringLiteral("a key");
    }

    ModelFixture fixture;
};

TEST_F(AppModelAPIKeyTest, savingStoresTheTrimmedDraftAndForgetsTheDraft)
{
    AppModel &model = fixture.makeModel();
    model.presentError(QStringLiteral("an old error"));
    QSignalSpy savedState(&model, &AppModel::hasStoredAPIKeyChanged);
    model.setApiKeyDraft(QStringLiteral("  sk-typed-key\n"));
    model.saveAPIKey();

    EXPECT_EQ(fixture.credentials->items.value(itemKey), QByteArray("sk-typed-key"));
    EXPECT_EQ(model.apiKeyDraft(), QString());
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);
    EXPECT_EQ(model.statusMessage(), QStringLiteral("API key saved to Keychain."));
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.validatedAPIKey(), QStringLiteral("sk-typed-key"));

    model.setApiKeyDraft(QStringLiteral("sk-replacement"));
    model.saveAPIKey();
    EXPECT_EQ(fixture.credentials->items.value(itemKey), QByteArray("sk-replacement"));
    EXPECT_EQ(savedState.count(), 1); // saving again changes nothing observable
}

TEST_F(AppModelAPIKeyTest, aDraftOfOnlyWhitespaceRemovesTheSavedKey)
{
    fixture.credentials->items[itemKey] = "sk-saved";
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(model.hasStoredAPIKey());
    model.setApiKeyDraft(QStringLiteral(" \t\n "));
    model.saveAPIKey();

    EXPECT_FALSE(fixture.credentials->items.contains(itemKey));
    EXPECT_EQ(model.apiKeyDraft(), QString());
    EXPECT_FALSE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), false);
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Saved API key removed."));
    EXPECT_EQ(missingKeyMessage(model), QStringLiteral("Add your OpenAI API key first."));
}

TEST_F(AppModelAPIKeyTest, anUnsavedDraftWinsOverTheSavedKeyAndIsNotSaved)
{
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-saved"));
    model.saveAPIKey();
    model.setApiKeyDraft(QStringLiteral("\tsk-typed \n"));
    EXPECT_EQ(model.validatedAPIKey(), QStringLiteral("sk-typed"));
    EXPECT_EQ(fixture.credentials->items.value(itemKey), QByteArray("sk-saved"));
    EXPECT_EQ(model.apiKeyDraft(), QStringLiteral("\tsk-typed \n"));
}

TEST_F(AppModelAPIKeyTest, theSavedKeyIsReadOnceTrimmedAndThenKept)
{
    fixture.credentials->items[itemKey] = " sk-from-keyring\n";
    writePreferences(R"({"hasStoredAPIKey": false})");
    AppModel &model = fixture.makeModel();
    EXPECT_EQ(model.validatedAPIKey(), QStringLiteral("sk-from-keyring"));
    fixture.credentials->failure = CredentialStore::Result{Outcome::failure, 5};
    EXPECT_EQ(model.validatedAPIKey(), QStringLiteral("sk-from-keyring"));
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);
}

TEST_F(AppModelAPIKeyTest, anItemDeletedBehindQuorlasBackClearsTheSavedState)
{
    for (const QByteArray &left : {QByteArray(), QByteArray(" \n")}) {
        fixture.credentials->items[itemKey] = "sk-gone-soon";
        AppModel &model = fixture.makeModel();
        ASSERT_TRUE(model.hasStoredAPIKey());
        if (left.isNull())
            fixture.credentials->items.remove(itemKey);
        else
            fixture.credentials->items[itemKey] = left; // an empty item counts as none

        EXPECT_EQ(missingKeyMessage(model), QStringLiteral("Add your OpenAI API key first."));
        EXPECT_FALSE(model.hasStoredAPIKey());
        EXPECT_EQ(storedMarker(), false);
    }
}

TEST_F(AppModelAPIKeyTest, aReadFailurePropagatesAndChangesNothing)
{
    fixture.credentials->items[itemKey] = "sk-unreadable";
    AppModel &model = fixture.makeModel();
    fixture.credentials->failures[Call::copy] = {Outcome::failure, 9};
    try {
        (void)model.validatedAPIKey();
        ADD_FAILURE() << "no failure";
    } catch (const QuorlaError &error) {
        EXPECT_EQ(model.localizedMessage(error), QStringLiteral("Couldn't read the API key from Keychain (status 9)."));
    }
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);
}

TEST_F(AppModelAPIKeyTest, theMarkerAtLaunchCombinesTheDefaultsAndTheKeyring)
{
    const struct {
        const char *preferences;
        bool itemExists;
        bool checkFails;
        bool expected;
        std::optional<bool> persisted;
    } cases[] = {
        {"{}", false, false, false, false},
        {R"({"hasStoredAPIKey": false})", true, false, true, true},
        {R"({"hasStoredAPIKey": true})", false, false, true, true},
        {R"({"hasStoredAPIKey": "true"})", false, false, false, false},
        {R"({"hasStoredAPIKey": true})", false, true, true, true},
        {"{}", true, true, false, std::nullopt}, // a failed check writes nothing
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.preferences);
        fixture.credentials->items.clear();
        fixture.credentials->failures.clear();
        QFile::remove(fixture.preferencesPath());
        writePreferences(c.preferences);
        if (c.itemExists)
            fixture.credentials->items[itemKey] = "sk-present";
        if (c.checkFails)
            fixture.credentials->failures[Call::exists] = {Outcome::interactionNotAllowed, 2};

        AppModel &model = fixture.makeModel();
        EXPECT_EQ(model.hasStoredAPIKey(), c.expected);
        EXPECT_EQ(storedMarker(), c.persisted);
        EXPECT_EQ(model.errorMessage(), std::nullopt);
    }
}

TEST_F(AppModelAPIKeyTest, aFailedSaveOrRemovalKeepsEverythingAsItWas)
{
    fixture.credentials->items[itemKey] = "sk-old";
    AppModel &model = fixture.makeModel();
    fixture.credentials->failure = CredentialStore::Result{Outcome::failure, -25};

    model.setApiKeyDraft(QStringLiteral("sk-new"));
    model.saveAPIKey();
    EXPECT_EQ(model.errorMessage(), QStringLiteral("Couldn't update the API key in Keychain (status -25)."));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Couldn't save the API key."));
    EXPECT_EQ(model.apiKeyDraft(), QStringLiteral("sk-new"));
    EXPECT_TRUE(model.hasStoredAPIKey());

    model.setApiKeyDraft(QStringLiteral(" "));
    model.saveAPIKey();
    EXPECT_EQ(model.errorMessage(), QStringLiteral("Couldn't remove the saved API key (status -25)."));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Couldn't save the API key."));
    EXPECT_EQ(model.apiKeyDraft(), QStringLiteral(" "));

    model.clearAPIKey();
    EXPECT_EQ(model.errorMessage(), QStringLiteral("Couldn't remove the saved API key (status -25)."));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Couldn't remove the saved API key."));
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);
    EXPECT_EQ(fixture.credentials->items.value(itemKey), QByteArray("sk-old"));
}

TEST_F(AppModelAPIKeyTest, clearingRemovesTheKeyButLeavesTheDraft)
{
    fixture.credentials->items[itemKey] = "sk-old";
    AppModel &model = fixture.makeModel();
    (void)model.validatedAPIKey();
    model.presentError(QStringLiteral("an old error"));
    model.setApiKeyDraft(QStringLiteral("half typed"));
    model.clearAPIKey();

    EXPECT_FALSE(fixture.credentials->items.contains(itemKey));
    EXPECT_FALSE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), false);
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Saved API key removed."));
    EXPECT_EQ(model.apiKeyDraft(), QStringLiteral("half typed"));
    model.setApiKeyDraft(QString());
    EXPECT_EQ(missingKeyMessage(model), QStringLiteral("Add your OpenAI API key first.")); // the cached copy went too
}

} // namespace
