#include "ModelTest.h"

#include "AppInfo.h"
#include "models/QuorlaError.h"
#include "stores/PreferenceKeys.h"

#include <QSignalSpy>

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;

const QString itemKey = QStringLiteral(QUORLA_APP_ID "/openai-api-key");
const QString &marker = PreferenceKeys::hasStoredAPIKey;
const QString missingKey = QStringLiteral("Add your OpenAI API key first.");

class AppModelAPIKeyTest : public ModelTest
{
protected:
    std::optional<bool> storedMarker() const { return stored().boolValue(marker); }
    QString keyError(AppModel &model)
    {
        try {
            (void)model.validatedAPIKey();
        } catch (const QuorlaError &error) {
            return model.localizedMessage(error);
        }
        return QStringLiteral("a key");
    }
};

TEST_F(AppModelAPIKeyTest, savingStoresTheTrimmedDraftAndAnUnsavedDraftWins)
{
    AppModel &model = fixture.makeModel();
    model.presentError("an old error");
    QSignalSpy savedState(&model, &AppModel::hasStoredAPIKeyChanged);
    model.setApiKeyDraft("  sk-typed-key\n");
    model.saveAPIKey();

    EXPECT_EQ(fixture.credentials->items.value(itemKey), "sk-typed-key");
    EXPECT_EQ(model.apiKeyDraft(), QString());
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);
    EXPECT_EQ(model.statusMessage(), "API key saved to Keychain.");
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.validatedAPIKey(), "sk-typed-key");

    model.setApiKeyDraft("sk-replacement");
    model.saveAPIKey();
    EXPECT_EQ(fixture.credentials->items.value(itemKey), "sk-replacement");
    EXPECT_EQ(savedState.count(), 1); // saving again changes nothing observable

    model.setApiKeyDraft("\tsk-typed \n");
    EXPECT_EQ(model.validatedAPIKey(), "sk-typed");
    EXPECT_EQ(fixture.credentials->items.value(itemKey), "sk-replacement");
    EXPECT_EQ(model.apiKeyDraft(), "\tsk-typed \n");
}

// A blank draft saved and Clear both remove the key; only Clear keeps what is typed.
TEST_F(AppModelAPIKeyTest, removingTheKeyForgetsItsCachedCopy)
{
    for (const bool blankDraft : {true, false}) {
        SCOPED_TRACE(blankDraft ? "blank draft" : "clear");
        fixture.credentials->items[itemKey] = "sk-old";
        AppModel &model = fixture.makeModel();
        ASSERT_EQ(model.validatedAPIKey(), "sk-old");
        model.presentError("an old error");
        model.setApiKeyDraft(blankDraft ? " \t\n " : "half typed");
        if (blankDraft)
            model.saveAPIKey();
        else
            model.clearAPIKey();

        EXPECT_FALSE(fixture.credentials->items.contains(itemKey));
        EXPECT_FALSE(model.hasStoredAPIKey());
        EXPECT_EQ(storedMarker(), false);
        EXPECT_EQ(model.errorMessage(), std::nullopt);
        EXPECT_EQ(model.statusMessage(), "Saved API key removed.");
        EXPECT_EQ(model.apiKeyDraft(), blankDraft ? "" : "half typed");
        model.setApiKeyDraft(QString());
        EXPECT_EQ(keyError(model), missingKey);
    }
}

TEST_F(AppModelAPIKeyTest, theSavedKeyIsReadTrimmedOnceAndAReadFailureChangesNothing)
{
    fixture.credentials->items[itemKey] = " sk-from-keyring\n";
    writePreferences(R"({"hasStoredAPIKey": false})");
    AppModel &model = fixture.makeModel();
    fixture.credentials->failures[Call::copy] = {Outcome::failure, 9};
    EXPECT_EQ(keyError(model), "Couldn't read the API key from Keychain (status 9).");
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(storedMarker(), true);

    fixture.credentials->failures.clear();
    EXPECT_EQ(model.validatedAPIKey(), "sk-from-keyring");
    fixture.credentials->failure = CredentialStore::Result{Outcome::failure, 5};
    EXPECT_EQ(model.validatedAPIKey(), "sk-from-keyring");
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

        EXPECT_EQ(keyError(model), missingKey);
        EXPECT_FALSE(model.hasStoredAPIKey());
        EXPECT_EQ(storedMarker(), false);
    }
}

TEST_F(AppModelAPIKeyTest, theMarkerAtLaunchCombinesTheDefaultsAndTheKeyring)
{
    const struct {
        const char *preferences;
        bool itemExists, checkFails, expected;
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
    const QString removeFailed = QStringLiteral("Couldn't remove the saved API key (status -25).");
    const struct {
        const char *draft;
        bool clear;
        QString error, status;
    } cases[] = {
        {"sk-new", false, "Couldn't update the API key in Keychain (status -25).", "Couldn't save the API key."},
        {" ", false, removeFailed, "Couldn't save the API key."},
        {" ", true, removeFailed, "Couldn't remove the saved API key."},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.status.toStdString());
        model.setApiKeyDraft(c.draft);
        c.clear ? model.clearAPIKey() : model.saveAPIKey();
        EXPECT_EQ(model.errorMessage(), c.error);
        EXPECT_EQ(model.statusMessage(), c.status);
        EXPECT_EQ(model.apiKeyDraft(), c.draft);
        EXPECT_TRUE(model.hasStoredAPIKey());
        EXPECT_EQ(storedMarker(), true);
        EXPECT_EQ(fixture.credentials->items.value(itemKey), "sk-old");
    }
}

} // namespace
