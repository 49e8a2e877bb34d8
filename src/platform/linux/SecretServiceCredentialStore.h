#pragma once

#include "platform/CredentialStore.h"

// The credential store on the desktop's Secret Service (GNOME Keyring, KWallet,
// KeePassXC) through libsecret. Items carry the attributes "service" and "account"
// and live in the default collection. Nothing here unlocks a collection or answers a
// prompt, and every call gives up after a few seconds, so a stuck service never
// freezes the window. Status numbers are libsecret's GError codes.
class SecretServiceCredentialStore : public CredentialStore
{
public:
    Result update(const QString &service, const QString &account, const QByteArray &value) override;
    Result add(const QString &service, const QString &account, const QByteArray &value) override;
    Result copy(const QString &service, const QString &account, QByteArray *value) override;
    Result exists(const QString &service, const QString &account) override;
    Result remove(const QString &service, const QString &account) override;
    Result defaultCollection() override;
};
