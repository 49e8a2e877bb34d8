#include "AppInfo.h"
#include "LockedCollection.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "stores/KeychainStore.h"
#include "support/PlatformWords.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

using Outcome = CredentialStore::Outcome;

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

// Saved twice, the second value is the one read; values travel byte for byte, NUL bytes included.
TEST_F(SecretServiceCredentialStoreTest, storesReadsAndDeletesButNeverUnlocks)
{
    keychain.saveString(QStringLiteral("sk-first"), account);
    keychain.saveString(QStringLiteral("sk-second"), account);
    EXPECT_EQ(keychain.loadString(account), QStringLiteral("sk-second"));
    const QByteArray bytes("sk\0\xff\xfe", 5);
    ASSERT_EQ(store->update(service, account, bytes).outcome, Outcome::success);
    QByteArray read;
    ASSERT_EQ(store->copy(service, account, &read).outcome, Outcome::success);
    EXPECT_EQ(read, bytes);

    keychain.deleteItem(account);
    keychain.deleteItem(account);
    EXPECT_FALSE(keychain.contains(account));

    // A locked collection is never unlocked.
    keychain.saveString(QStringLiteral("sk-locked-away"), account);
    {
        const LockedCollection locked;
        ASSERT_TRUE(locked.isLocked);
        QByteArray read;
        const CredentialStore::Result results[] = {
            store->copy(service, account, &read), store->exists(service, account),
            store->update(service, account, "sk-new"), store->remove(service, account),
            store->add(service + QStringLiteral("-new"), account, "sk-new")};
        for (const auto &result : results) {
            EXPECT_EQ(result.outcome, Outcome::interactionNotAllowed) << "call " << &result - results;
            EXPECT_EQ(result.status, 2) << "call " << &result - results; // libsecret's IS_LOCKED
        }
        EXPECT_TRUE(read.isEmpty());
    }
    EXPECT_EQ(keychain.loadString(account), QStringLiteral("sk-locked-away"));
}

} // namespace
