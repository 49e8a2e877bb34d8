#include "FakeCredentialStore.h"

#include "models/QuorlaError.h"
#include "stores/KeychainStore.h"
#include "support/PlatformWords.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using Call = FakeCredentialStore::Call;
using Outcome = CredentialStore::Outcome;

const QString service = "app.quorla.Test";
const QString account = KeychainStore::apiKeyAccount();
const QString itemKey = service + "/openai-api-key";

QString failureMessage(const std::function<void()> &operation)
{
    try {
        operation();
    } catch (const QuorlaError &error) {
        return error.kind() == QuorlaError::Kind::keychainFailure ? error.payload() : "wrong kind";
    }
    return "no failure";
}

TEST(KeychainStore, savingUpdatesAnExistingItemAndAddsAMissingOne)
{
    auto fake = std::make_shared<FakeCredentialStore>();
    KeychainStore store(fake, service, PlatformWords::macOS());
    store.saveString("sk-ü", account);
    store.saveString("sk-second", account);
    EXPECT_EQ(fake->items, (QHash<QString, QByteArray>{{itemKey, "sk-second"}}));
    fake->items[itemKey] = "sk-\xc3\xbc";
    EXPECT_EQ(store.loadString(account), "sk-ü");
}

TEST(KeychainStore, loadingAnswersAbsentForEverythingThatIsNoUsableKey)
{
    auto fake = std::make_shared<FakeCredentialStore>();
    KeychainStore store(fake, service, PlatformWords::macOS());
    EXPECT_EQ(store.loadString(account), std::nullopt);
    for (const QByteArray &bytes : {QByteArray("sk-\xff"), QByteArray("sk-\xe2\x82"), QByteArray("\xc0\xaf")}) {
        fake->items[itemKey] = bytes;
        EXPECT_EQ(store.loadString(account), std::nullopt) << bytes.toHex().toStdString();
    }
    fake->items[itemKey] = "sk-locked";
    fake->failures[Call::copy] = {Outcome::interactionNotAllowed, 2};
    EXPECT_EQ(store.loadString(account), std::nullopt);
    fake->failures[Call::remove] = {Outcome::itemNotFound, 0};
    EXPECT_NO_THROW(store.deleteItem(account));
}

TEST(KeychainStore, failuresCarryTheStatusInTheirOperationsMessage)
{
    const struct {
        Call call;
        CredentialStore::Result result;
        std::function<void(KeychainStore &)> operation;
        const char *message;
    } cases[] = {
        {Call::update, {Outcome::failure, -25299}, [](KeychainStore &s) { s.saveString("k", account); },
         "Couldn't update the API key in Keychain (status -25299)."},
        {Call::update, {Outcome::interactionNotAllowed, 2}, [](KeychainStore &s) { s.saveString("k", account); },
         "Couldn't update the API key in Keychain (status 2)."},
        {Call::add, {Outcome::failure, 3}, [](KeychainStore &s) { s.saveString("k", account); },
         "Couldn't save the API key to Keychain (status 3)."},
        {Call::copy, {Outcome::failure, 19}, [](KeychainStore &s) { (void)s.loadString(account); },
         "Couldn't read the API key from Keychain (status 19)."},
        {Call::exists, {Outcome::interactionNotAllowed, 2}, [](KeychainStore &s) { (void)s.contains(account); },
         "Couldn't check Keychain item (status 2)."},
        {Call::remove, {Outcome::failure, 4}, [](KeychainStore &s) { s.deleteItem(account); },
         "Couldn't remove the saved API key (status 4)."},
    };
    for (const auto &c : cases) {
        auto fake = std::make_shared<FakeCredentialStore>();
        fake->failures[c.call] = c.result;
        KeychainStore store(fake, service, PlatformWords::macOS());
        EXPECT_EQ(failureMessage([&] { c.operation(store); }), QString::fromUtf8(c.message));
    }
}

TEST(KeychainStore, withoutAnyServiceTheMessageSaysWhatMustRun)
{
    auto fake = std::make_shared<FakeCredentialStore>();
    fake->failure = CredentialStore::Result{Outcome::serviceUnavailable, 2};
    KeychainStore store(fake, service, PlatformWords::linuxDesktop());
    EXPECT_EQ(failureMessage([&] { store.saveString("sk", account); }),
              QStringLiteral("Couldn't update the API key in the keyring (status 2). No Secret Service is running: "
                             "start one, for example GNOME Keyring or KeePassXC, and try again."));
    EXPECT_TRUE(failureMessage([&] { (void)store.contains(account); }).startsWith("Couldn't check keyring item (status 2). No Secret Service"));

    // The macOS table has no such sentence: the status message stands alone.
    KeychainStore mac(fake, service, PlatformWords::macOS());
    EXPECT_EQ(failureMessage([&] { mac.deleteItem(account); }), "Couldn't remove the saved API key (status 2).");
}

} // namespace
