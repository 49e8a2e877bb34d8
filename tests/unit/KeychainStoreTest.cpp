#include "FakeCredentialStore.h"
#include "TaskResult.h"

#include "stores/KeychainStore.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;
using ItemState = KeychainStore::ItemState;

const QString account = KeychainStore::apiKeyAccount();
const QString itemKey = "app.quorla.Test/openai-api-key";

struct KeychainStoreTest : ::testing::Test {
    QString failureOf(const std::function<QCoro::Task<>(KeychainStore &)> &operation,
                      PlatformWords words = PlatformWords::macOS())
    {
        KeychainStore store(fake, "app.quorla.Test", words);
        const auto run = [&]() -> QCoro::Task<bool> { co_await operation(store); co_return true; };
        const TaskResult<bool> result = waitForResult(run());
        return result.error ? result.errorText() : "no failure";
    }
    KeychainStore::StoredString loaded() { return waitForResult(store.loadString(account)).value.value_or(KeychainStore::StoredString{}); }
    std::shared_ptr<FakeCredentialStore> fake = std::make_shared<FakeCredentialStore>();
    KeychainStore store{fake, "app.quorla.Test", PlatformWords::macOS()};
};

// A locked item, neither there nor gone, is shown through the model.
TEST_F(KeychainStoreTest, savingUpdatesOrAddsAndLoadingReadsOnlyWholeText)
{
    ASSERT_TRUE(waitForDone(store.saveString("sk-ü", account)));
    EXPECT_EQ(fake->items, (QHash<QString, QByteArray>{{itemKey, "sk-\xc3\xbc"}}));
    EXPECT_EQ(loaded().value, "sk-ü");
    fake->items[itemKey] = "sk-\xe2\x82"; // cut short inside a character
    EXPECT_EQ(loaded().state, ItemState::absent);
    fake->failures[Call::remove] = {Outcome::itemNotFound, 0};
    EXPECT_EQ(failureOf([](KeychainStore &s) { return s.deleteItem(account); }), "no failure");
}

TEST_F(KeychainStoreTest, failuresCarryTheStatusInTheirOperationsMessage)
{
    const auto save = [](KeychainStore &s) { return s.saveString("k", account); };
    const auto check = [](KeychainStore &s) -> QCoro::Task<> { co_await s.contains(account); };
    const struct {
        Call call;
        CredentialStore::Result result;
        std::function<QCoro::Task<>(KeychainStore &)> operation;
        const char *message;
    } cases[] = {
        {Call::add, {Outcome::failure, 3}, save, "Couldn't save the API key to Keychain (status 3)."},
        {Call::add, {Outcome::interactionNotAllowed, 2}, save, "Keychain is locked, so Quorla can't use the saved API key. Click Unlock Keychain, or unlock it in Keychain Access."},
        {Call::exists, {Outcome::failure, 2}, check, "Couldn't check Keychain item (status 2)."},
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
}

} // namespace
