#include "AppInfo.h"
#include "LockedCollection.h"
#include "TaskResult.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "stores/KeychainStore.h"
#include "support/PlatformWords.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

using Outcome = CredentialStore::Outcome;
using ItemState = KeychainStore::ItemState;

template <typename T>
T answerOf(QCoro::Task<T> task)
{
    TaskResult<T> result = waitForResult(std::move(task));
    EXPECT_FALSE(result.error) << result.errorText().toStdString();
    return result.value.value_or(T{});
}

// The real gnome-keyring of the test desktop. Each test keeps its items under a
// service name of its own and removes them afterwards.
class SecretServiceCredentialStoreTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) << "needs the headless desktop";
        ASSERT_TRUE(QDBusConnection::sessionBus().interface()->isServiceRegistered(secretsName))
            << "needs gnome-keyring on the session bus";
    }
    void TearDown() override { store->remove(service, account); }

    std::shared_ptr<SecretServiceCredentialStore> store = std::make_shared<SecretServiceCredentialStore>();
    const QString service = QStringLiteral(QUORLA_APP_ID ".test-") + QUuid::createUuid().toString(QUuid::Id128);
    const QString account = KeychainStore::apiKeyAccount();
    KeychainStore keychain{store, service, PlatformWords::linuxDesktop()};
};

// Saved twice, the second value is the one read; values travel byte for byte, NUL bytes
// included. A locked collection is unlocked only when asked, through the keyring's prompt.
TEST_F(SecretServiceCredentialStoreTest, storesReadsAndDeletesAndUnlocksOnlyWhenAsked)
{
    ASSERT_TRUE(waitForDone(keychain.saveString(QStringLiteral("sk-first"), account)));
    ASSERT_TRUE(waitForDone(keychain.saveString(QStringLiteral("sk-second"), account)));
    EXPECT_EQ(answerOf(keychain.loadString(account)).value, QStringLiteral("sk-second"));
    const QByteArray bytes("sk\0\xff\xfe", 5);
    ASSERT_EQ(answerOf(store->update(service, account, bytes)).outcome, Outcome::success);
    EXPECT_EQ(answerOf(store->copy(service, account)).value, bytes);

    ASSERT_TRUE(waitForDone(keychain.deleteItem(account)));
    ASSERT_TRUE(waitForDone(keychain.deleteItem(account)));
    EXPECT_EQ(answerOf(keychain.contains(account)), ItemState::absent);

    ASSERT_TRUE(waitForDone(keychain.saveString(QStringLiteral("sk-locked-away"), account)));
    const LockedCollection locked;
    ASSERT_TRUE(locked.isLocked);
    const CredentialStore::Result results[] = {
        answerOf(store->copy(service, account)), answerOf(store->exists(service, account)),
        answerOf(store->update(service, account, "sk-new")), answerOf(store->remove(service, account)),
        answerOf(store->add(service + QStringLiteral("-new"), account, "sk-new"))};
    for (const auto &result : results) {
        EXPECT_EQ(result.outcome, Outcome::interactionNotAllowed) << "call " << &result - results;
        EXPECT_EQ(result.status, 2) << "call " << &result - results; // libsecret's IS_LOCKED
        EXPECT_TRUE(result.value.isEmpty());
    }
    EXPECT_EQ(answerOf(keychain.loadString(account)).state, ItemState::locked);

    // The user types the password into gnome-keyring's own prompt.
    QProcess user;
    user.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("w=$(xdotool search --sync --onlyvisible --name '^Unlock') && xdotool windowactivate --sync $w && "
                                                                           "xdotool type --delay 20 \"$0\" && xdotool key Return"),
                                      qEnvironmentVariable("KEYRING_PASSWORD", QStringLiteral("ci"))});
    EXPECT_TRUE(answerOf(keychain.unlock(account)));
    user.waitForFinished();
    EXPECT_EQ(answerOf(keychain.loadString(account)).value, QStringLiteral("sk-locked-away"));
}

} // namespace
