#include "FakeCredentialStore.h"

#include "models/QuorlaError.h"
#include "stores/KeychainStore.h"
#include "support/PlatformWords.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;

const QString account = KeychainStore::apiKeyAccount();
const QString itemKey = "app.quorla.Test/openai-api-key";

struct KeychainStoreTest : ::testing::Test {
    QString failureOf(const std::function<void(KeychainStore &)> &operation, PlatformWords words = PlatformWords::macOS())
    {
        KeychainStore store(fake, "app.quorla.Test", words);
        try {
            operation(store);
        } catch (const QuorlaError &error) {
            return error.kind() == QuorlaError::Kind::keychainFailure ? error.payload() : "wrong kind";
        }
        return "no failure";
    }
    std::shared_ptr<FakeCredentialStore> fake = std::make_shared<FakeCredentialStore>();
    KeychainStore store{fake, "app.quorla.Test", PlatformWords::macOS()};
};

TEST_F(KeychainStoreTest, savingUpdatesOrAddsAndLoadingAnswersAbsentForNoUsableKey)
{
    store.saveString("sk-ü", account);
    EXPECT_EQ(fake->items, (QHash<QString, QByteArray>{{itemKey, "sk-\xc3\xbc"}}));
    EXPECT_EQ(store.loadString(account), "sk-ü");
    fake->items[itemKey] = "sk-\xe2\x82"; // cut short inside a character
    EXPECT_EQ(store.loadString(account), std::nullopt);
    fake->items[itemKey] = "sk-locked";
    fake->failures[Call::copy] = {Outcome::interactionNotAllowed, 2};
    EXPECT_EQ(store.loadString(account), std::nullopt);
    fake->failures[Call::remove] = {Outcome::itemNotFound, 0};
    EXPECT_NO_THROW(store.deleteItem(account));
}

TEST_F(KeychainStoreTest, failuresCarryTheStatusInTheirOperationsMessage)
{
    const auto save = [](KeychainStore &s) { s.saveString("k", account); };
    const struct {
        Call call;
        CredentialStore::Result result;
        std::function<void(KeychainStore &)> operation;
        const char *message;
    } cases[] = {
        {Call::add, {Outcome::failure, 3}, save, "Couldn't save the API key to Keychain (status 3)."},
        {Call::exists, {Outcome::failure, 2}, [](KeychainStore &s) { (void)s.contains(account); }, "Couldn't check Keychain item (status 2)."},
    };
    for (const auto &c : cases) {
        fake->failures = {{c.call, c.result}};
        EXPECT_EQ(failureOf(c.operation), QString::fromUtf8(c.message));
    }
    // Without any Secret Service the message says what must run; macOS has no such sentence.
    fake->failures.clear();
    fake->failure = CredentialStore::Result{Outcome::serviceUnavailable, 2};
    EXPECT_EQ(failureOf(save, PlatformWords::linuxDesktop()),
              "Couldn't update the API key in the keyring (status 2). No Secret Service is running: "
              "start one, for example GNOME Keyring or KeePassXC, and try again.");
    EXPECT_EQ(failureOf([](KeychainStore &s) { s.deleteItem(account); }), "Couldn't remove the saved API key (status 2).");
}

} // namespace
