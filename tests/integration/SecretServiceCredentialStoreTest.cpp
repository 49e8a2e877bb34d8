#include "AppInfo.h"
#include "LockedCollection.h"
#include "ModelFixture.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDirIterator>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

using Outcome = CredentialStore::Outcome;

// Sets an environment variable until the guard goes, however the test ends.
auto scopedEnvironment(const char *name, const QString &value)
{
    const auto old = qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt;
    qputenv(name, value.toLocal8Bit());
    return qScopeGuard([name, old] { old ? qputenv(name, *old) : qunsetenv(name); });
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

TEST_F(SecretServiceCredentialStoreTest, valuesAreKeptByteForByteAndOnlyValidUtf8Loads)
{
    const struct {
        QByteArray bytes;
        std::optional<QString> text;
    } values[] = {
        {"sk-proj-\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87 \xe2\x82\xac", QStringLiteral("sk-proj-ключ €")},
        // A byte-order mark is part of the value; a newline stays for the model to trim.
        {"\xef\xbb\xbfsk-bom\n", QChar(0xfeff) + QStringLiteral("sk-bom\n")},
        {QByteArray("sk\0nul", 6), QStringLiteral("sk") + QChar(0) + QStringLiteral("nul")},
        {"sk-\xff\xfe", std::nullopt},
        {"sk-\xe2\x82", std::nullopt},
    };
    for (const auto &value : values) {
        store->remove(service, account);
        ASSERT_EQ(store->add(service, account, value.bytes).outcome, Outcome::success);
        QByteArray read;
        ASSERT_EQ(store->copy(service, account, &read).outcome, Outcome::success);
        EXPECT_EQ(read, value.bytes);
        EXPECT_EQ(keychain.loadString(account), value.text) << value.bytes.toHex().toStdString();
    }
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

// The key lives only in the keyring: nothing under Quorla's config or temporary
// directories holds its text after it was saved and used.
TEST_F(SecretServiceCredentialStoreTest, theKeyIsWrittenToNoFile)
{
    QTemporaryDir root;
    const auto config = scopedEnvironment("XDG_CONFIG_HOME", root.filePath(QStringLiteral("config")));
    const auto temporary = scopedEnvironment("TMPDIR", root.filePath(QStringLiteral("tmp")));
    ASSERT_TRUE(QDir().mkpath(root.filePath(QStringLiteral("tmp"))));
    const QString key = QStringLiteral("sk-proj-") + QUuid::createUuid().toString(QUuid::Id128);

    ModelFixture fixture; // its files now land under root
    fixture.makeModel();
    AppServices services = fixture.services;
    services.keychainStore = std::make_shared<KeychainStore>(store, service, *services.words);
    services.preferences = std::make_shared<PreferencesStore>(PreferencesStore::defaultFilePath());
    ASSERT_TRUE(PreferencesStore::defaultFilePath().startsWith(root.path()));
    {
        AppModel model(services);
        model.setApiKeyDraft(key + QLatin1Char('\n'));
        model.saveAPIKey();
    }
    // A relaunch reads the key from the keyring, not from a file.
    AppModel relaunched(services);
    EXPECT_EQ(relaunched.validatedAPIKey(), key);

    const QByteArray utf8 = key.toUtf8();
    const QByteArray utf16(reinterpret_cast<const char *>(key.utf16()), key.size() * 2);
    int files = 0;
    for (QDirIterator it(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext(); ++files) {
        QFile file(it.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        const QByteArray bytes = file.readAll();
        EXPECT_FALSE(bytes.contains(utf8) || bytes.contains(utf16)) << file.fileName().toStdString();
    }
    EXPECT_GT(files, 0);
}

} // namespace
