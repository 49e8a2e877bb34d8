#include "AppInfo.h"
#include "LockedCollection.h"
#include "ModelFixture.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QThread>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

using Outcome = CredentialStore::Outcome;

const QString noServiceSentence = PlatformWords::linuxDesktop().credentialServiceUnavailable;

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

// A bus of our own, the stock session policy without its service directories, so
// nothing is activated; a gnome-keyring of its own can be started and stopped on it.
struct PrivateBus {
    PrivateBus()
    {
        QDir(directory.path()).mkpath(QStringLiteral("run"));
        QFile::setPermissions(directory.filePath(QStringLiteral("run")),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QFile config(directory.filePath(QStringLiteral("bus.conf")));
        if (!config.open(QIODevice::WriteOnly))
            return;
        config.write(QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path=%1</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>
<allow own="*"/></policy></busconfig>)")
                         .arg(directory.filePath(QStringLiteral("bus")))
                         .toUtf8());
        config.close();
        daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + config.fileName(),
                                                     QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        if (!daemon.waitForStarted(5000) || !daemon.waitForReadyRead(5000))
            return;
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromUtf8(daemon.readLine().trimmed()));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), directory.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), directory.filePath(QStringLiteral("run")));
    }
    ~PrivateBus()
    {
        stopKeyring();
        QDBusConnection::disconnectFromBus(directory.path());
        daemon.terminate();
        if (!daemon.waitForFinished(5000))
            daemon.kill();
    }

    // Starts gnome-keyring and waits until its login collection is unlocked.
    bool startKeyring()
    {
        keyring.setProcessEnvironment(environment);
        keyring.start(QStringLiteral("gnome-keyring-daemon"),
                      {QStringLiteral("--foreground"), QStringLiteral("--unlock"), QStringLiteral("--components=secrets")});
        if (!keyring.waitForStarted(5000))
            return false;
        // Without an event loop QProcess writes only when asked to wait for it.
        keyring.write("password");
        keyring.waitForBytesWritten(5000);
        keyring.closeWriteChannel();
        QDBusConnection bus = QDBusConnection::connectToBus(
            environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), directory.path());
        QDBusMessage get = QDBusMessage::createMethodCall(
            secretsName, QStringLiteral("/org/freedesktop/secrets/collection/login"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        get.setArguments({QStringLiteral("org.freedesktop.Secret.Collection"), QStringLiteral("Locked")});
        for (QDeadlineTimer deadline(10000); !deadline.hasExpired(); QThread::msleep(50)) {
            const QDBusMessage reply = bus.call(get, QDBus::Block, 1000);
            if (reply.type() == QDBusMessage::ReplyMessage
                && !reply.arguments().value(0).value<QDBusVariant>().variant().toBool())
                return true;
        }
        return false;
    }
    void stopKeyring()
    {
        keyring.terminate();
        if (!keyring.waitForFinished(5000))
            keyring.kill();
        keyring.waitForFinished(5000);
    }

    QTemporaryDir directory;
    QProcess daemon;
    QProcess keyring;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

QString probe(const QProcessEnvironment &environment, const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QUORLA_KEYCHAIN_PROBE), arguments);
    if (!process.waitForFinished(30000))
        return QStringLiteral("hung");
    return QString::fromUtf8(process.readAllStandardOutput().trimmed());
}

TEST(SecretServiceMissing, everyOperationSaysASecretServiceMustRun)
{
    const PrivateBus bus;
    ASSERT_TRUE(bus.environment.contains(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    QProcessEnvironment noBus = QProcessEnvironment::systemEnvironment();
    noBus.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    noBus.remove(QStringLiteral("DISPLAY")); // or GIO would try to autolaunch a bus

    for (const auto &environment : {bus.environment, noBus}) {
        for (const char *operation : {"save sk-nowhere", "load", "contains", "delete"}) {
            const QString answer = probe(environment, QString::fromLatin1(operation).split(u' '));
            EXPECT_TRUE(answer.startsWith(QStringLiteral("error ")) && answer.endsWith(QStringLiteral("). ") + noServiceSentence))
                << answer.toStdString();
        }
    }
}

TEST(SecretServiceRestart, aKeyringRestartedWhileQuorlaRunsIsFoundAgain)
{
    PrivateBus bus;
    ASSERT_TRUE(bus.startKeyring());
    QProcess quorla;
    quorla.setProcessEnvironment(bus.environment);
    quorla.start(QStringLiteral(QUORLA_KEYCHAIN_PROBE), {QStringLiteral("save"), QStringLiteral("sk-before"),
                                                         QStringLiteral("pause"), QStringLiteral("load"),
                                                         QStringLiteral("save"), QStringLiteral("sk-after"),
                                                         QStringLiteral("load")});
    const auto nextLine = [&quorla] {
        while (!quorla.canReadLine() && quorla.waitForReadyRead(10000)) {
        }
        return quorla.readLine().trimmed().toStdString();
    };
    EXPECT_EQ(nextLine(), "ok");
    ASSERT_EQ(nextLine(), "paused");
    bus.stopKeyring();
    ASSERT_TRUE(bus.startKeyring());
    quorla.write("\n");
    quorla.waitForBytesWritten(5000);
    EXPECT_EQ(nextLine(), "ok sk-before");
    EXPECT_EQ(nextLine(), "ok");
    EXPECT_EQ(nextLine(), "ok sk-after");
    EXPECT_TRUE(quorla.waitForFinished(10000));
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
