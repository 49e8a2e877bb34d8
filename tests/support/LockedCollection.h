#pragma once

#include <QtDBus>
#include <gtest/gtest.h>

inline const QString secretsName = QStringLiteral("org.freedesktop.secrets");

inline QDBusMessage callKeyring(const QString &interface, const QString &method, const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(secretsName, QStringLiteral("/org/freedesktop/secrets"),
                                                       interface, method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().call(call);
}

// Locks the login collection for one test and unlocks it however the test ends.
// Unlocking through the Secret Service API needs a prompt; gnome-keyring's own
// interface takes the password the test desktop created the collection with.
struct LockedCollection {
    const QDBusObjectPath login{QStringLiteral("/org/freedesktop/secrets/collection/login")};
    const bool isLocked = callKeyring(QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("Lock"),
                                      {QVariant::fromValue(QList<QDBusObjectPath>{login})})
                              .type()
                       == QDBusMessage::ReplyMessage;
    ~LockedCollection()
    {
        const QDBusMessage session = callKeyring(QStringLiteral("org.freedesktop.Secret.Service"),
                                                 QStringLiteral("OpenSession"),
                                                 {QStringLiteral("plain"), QVariant::fromValue(QDBusVariant(QString()))});
        QDBusArgument secret;
        secret.beginStructure();
        secret << qvariant_cast<QDBusObjectPath>(session.arguments().value(1)) << QByteArray()
               << (qEnvironmentVariableIsEmpty("KEYRING_PASSWORD") ? QByteArray("ci") : qgetenv("KEYRING_PASSWORD"))
               << QStringLiteral("text/plain");
        secret.endStructure();
        const QDBusMessage unlocked =
            callKeyring(QStringLiteral("org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"),
                        QStringLiteral("UnlockWithMasterPassword"),
                        {QVariant::fromValue(login), QVariant::fromValue(secret)});
        EXPECT_EQ(unlocked.type(), QDBusMessage::ReplyMessage) << "the login collection stays locked";
    }
};
