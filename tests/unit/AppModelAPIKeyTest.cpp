#include "ModelTest.h"
#include "TaskResult.h"

#include "AppInfo.h"
#include "models/QuorlaError.h"
#include "stores/PreferenceKeys.h"

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;

const QString itemKey = QStringLiteral(QUORLA_APP_ID "/openai-api-key");
const QString &marker = PreferenceKeys::hasStoredAPIKey;
const QString missingKey = QStringLiteral("Add your OpenAI API key first.");
const QString lockedKeychain = PlatformWords::macOS().credentialStoreLocked;

class AppModelAPIKeyTest : public ModelTest
{
protected:
    std::optional<bool> storedMarker() const { return stored().boolValue(marker); }
    // The key a request would use, or why there is none.
    static QString keyFor(AppModel &model)
    {
        const TaskResult<APIKeyLookup> lookup = waitForResult(model.validatedAPIKey());
        return lookup.error ? lookup.errorText() : lookup.value->key.isEmpty() ? missingKey
                                                                               : lookup.value->key;
    }
};

// Save and Clear with every kind of draft, working and failing.
TEST_F(AppModelAPIKeyTest, savingAndClearingTheKey)
{
    const QString removeFailed = "Couldn't remove the saved API key (status -25).";
    const struct {
        const char *name, *draft;
        bool clear, fails;
        std::optional<QByteArray> item; // what the keyring holds after
        QString status;
        std::optional<QString> error;
        QString draftAfter;
    } cases[] = {
        {"save trims", "  sk-typed-key\n", false, false, "sk-typed-key", "API key saved to Keychain.", {}, ""},
        {"a blank save removes", " \t\n ", false, false, {}, "Saved API key removed.", {}, ""},
        {"clear keeps the draft", "half typed", true, false, {}, "Saved API key removed.", {}, "half typed"},
        {"failed save", "sk-new", false, true, "sk-old", "Couldn't save the API key.", "Couldn't update the API key in Keychain (status -25).", "sk-new"},
        {"failed blank save", " ", false, true, "sk-old", "Couldn't save the API key.", removeFailed, " "},
        {"failed clear", " ", true, true, "sk-old", "Couldn't remove the saved API key.", removeFailed, " "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        fixture.credentials->failure.reset();
        fixture.credentials->items = {{itemKey, "sk-old"}};
        AppModel &model = fixture.makeModel();
        model.presentError("an old error");
        if (c.fails)
            fixture.credentials->failure = CredentialStore::Result{Outcome::failure, -25};
        model.setApiKeyDraft(c.draft);
        c.clear ? model.clearAPIKey() : model.saveAPIKey();

        EXPECT_EQ(fixture.credentials->items.value(itemKey, "none"), c.item.value_or("none"));
        EXPECT_EQ(model.hasStoredAPIKey(), c.item.has_value());
        EXPECT_EQ(storedMarker(), c.item.has_value());
        EXPECT_EQ(model.statusMessage(), c.status);
        EXPECT_EQ(model.errorMessage(), c.error);
        EXPECT_EQ(model.apiKeyDraft(), c.draftAfter);
        model.setApiKeyDraft(QString());
        if (!c.fails) { // no stale cached copy
            EXPECT_EQ(keyFor(model), c.item ? QString(*c.item) : missingKey);
        }
    }
    // A keyring without the item gets it added, as UTF-8; clearing what is not there is no failure.
    fixture.credentials->items.clear();
    fixture.credentials->failure.reset();
    fixture.credentials->failures = {{Call::add, {Outcome::failure, 3}}};
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft("sk-ü");
    model.saveAPIKey();
    EXPECT_EQ(model.errorMessage(), "Couldn't save the API key to Keychain (status 3).");
    fixture.credentials->failures.clear();
    model.saveAPIKey();
    EXPECT_EQ(fixture.credentials->items.value(itemKey), "sk-\xc3\xbc");
    model.clearAPIKey();
    model.clearAPIKey();
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    // Without any Secret Service the message says what must run; macOS has no such sentence.
    fixture.words = &PlatformWords::linuxDesktop();
    fixture.credentials->failure = CredentialStore::Result{Outcome::serviceUnavailable, 2};
    fixture.makeModel().clearAPIKey();
    EXPECT_EQ(fixture.model().errorMessage(), "Couldn't remove the saved API key (status 2). No Secret "
                                              "Service is running: start one, for example GNOME Keyring or KeePassXC, and try again.");
}

// Looking the key up writes nothing; the dictation start records what the keyring
// said. A read failure changes nothing, a locked keyring keeps the saved state, and an
// item deleted (or blanked) behind Quorla's back clears it.
TEST_F(AppModelAPIKeyTest, aStartRecordsWhatTheKeyringSaid)
{
    const struct {
        const char *name;
        QByteArray item;
        std::optional<CredentialStore::Result> readFailure;
        QString error;
        bool savedAfter, lockedAfter;
    } cases[] = {
        {"read and trimmed", " sk-from-keyring\n", {}, "", true, false},
        {"blank", " \n", {}, missingKey, false, false},
        {"cut short inside a character", "sk-\xe2\x82", {}, missingKey, false, false},
        {"failed", "sk-any", CredentialStore::Result{Outcome::failure, 9}, "Couldn't read the API key from Keychain (status 9).", true, false},
        {"locked", "sk-locked", CredentialStore::Result{Outcome::interactionNotAllowed, 2}, lockedKeychain, true, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        writePreferences(R"({"hasStoredAPIKey": true})");
        fixture.credentials->items = {{itemKey, c.item}};
        fixture.credentials->failures.clear();
        if (c.readFailure)
            fixture.credentials->failures[Call::copy] = *c.readFailure;
        AppModel &model = fixture.makeModel();
        (void)keyFor(model);
        EXPECT_EQ(storedMarker(), true);
        ASSERT_TRUE(waitForDone(model.globalPressToTalkBegan()));
        EXPECT_EQ(model.errorMessage().value_or(""), c.error);
        EXPECT_EQ(model.isRecording(), c.error.isEmpty());
        EXPECT_EQ(model.hasStoredAPIKey(), c.savedAfter);
        EXPECT_EQ(storedMarker(), c.savedAfter);
        EXPECT_EQ(model.isKeychainLocked(), c.lockedAfter);
    }
    // Unlocking, only when asked, lets the next start read the key; no restart needed.
    AppModel &model = fixture.model();
    model.unlockKeychain();
    EXPECT_EQ(model.statusMessage(), "Keychain unlocked.");
    EXPECT_FALSE(model.isKeychainLocked());
    ASSERT_TRUE(waitForDone(model.globalPressToTalkBegan()));
    EXPECT_TRUE(model.isRecording());
    fixture.credentials->failure = CredentialStore::Result{Outcome::failure, 5};
    EXPECT_EQ(keyFor(model), "sk-locked"); // read once, then kept
    model.setApiKeyDraft("\tsk-typed \n"); // an unsaved draft wins
    EXPECT_EQ(keyFor(model), "sk-typed");
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
        {R"({"hasStoredAPIKey": true})", false, true, true, true},
        {"{}", true, true, false, std::nullopt}, // a failed check writes nothing
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.preferences);
        writePreferences(c.preferences);
        fixture.credentials->items = c.itemExists ? QHash<QString, QByteArray>{{itemKey, "sk-present"}} : QHash<QString, QByteArray>{};
        fixture.credentials->failures.clear();
        if (c.checkFails)
            fixture.credentials->failures[Call::exists] = {Outcome::interactionNotAllowed, 2};
        AppModel &model = fixture.makeModel();
        EXPECT_EQ(model.hasStoredAPIKey(), c.expected);
        EXPECT_EQ(storedMarker(), c.persisted);
        EXPECT_EQ(model.isKeychainLocked(), c.checkFails);
        EXPECT_EQ(model.errorMessage(), std::nullopt);
    }
}

} // namespace
