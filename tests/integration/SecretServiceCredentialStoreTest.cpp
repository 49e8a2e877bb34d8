#include "AppInfo.h"
#include "LockedCollection.h"
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

int itemCount(const QString &service, const QString &account)
{
    QProcess tool;
    tool.start(QStringLiteral("secret-tool"), {QStringLiteral("search"), QStringLiteral("--all"),
                                               QStringLiteral("service"), service, QStringLiteral("account"), account});
    if (!tool.waitForFinished(10000))
        return -1;
    return int(tool.readAllStandardError().count("[/") + tool.readAllStandardOutput().count("[/"));
}

TEST_F(SecretServiceCredentialStoreTest, savingTwiceUpdatesTheOneItemAndDeletingTwiceSucceeds)
{
    keychain.saveString(QStringLiteral("sk-first"), account);
    keychain.saveString(QStringLiteral("sk-second"), account);
    EXPECT_TRUE(keychain.contains(account));
    EXPECT_EQ(keychain.loadString(account), QStringLiteral("sk-second"));
    EXPECT_EQ(itemCount(service, account), 1);

    keychain.deleteItem(account);
    keychain.deleteItem(account);
    EXPECT_FALSE(keychain.contains(account));
    EXPECT_EQ(keychain.loadString(account), std::nullopt);
    EXPECT_EQ(itemCount(service, account), 0);
}

// Values travel byte for byte, NUL bytes and invalid UTF-8 included.
TEST_F(SecretServiceCredentialStoreTest, valuesAreKeptByteForByte)
{
    for (const QByteArray &bytes : {QByteArray("sk-proj-\xd0\xba\xd0\xbb \xe2\x82\xac\n"), QByteArray("sk\0\xff\xfe", 5)}) {
        store->remove(service, account);
        ASSERT_EQ(store->add(service, account, bytes).outcome, Outcome::success);
        QByteArray read;
        ASSERT_EQ(store->copy(service, account, &read).outcome, Outcome::success);
        EXPECT_EQ(read, bytes);
    }
    EXPECT_EQ(keychain.loadString(account), std::nullopt) << "no key in bytes that are not UTF-8";
}

TEST_F(SecretServiceCredentialStoreTest, aLockedCollectionIsNeverUnlocked)
{
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
