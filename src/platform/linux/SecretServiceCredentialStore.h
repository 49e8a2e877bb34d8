#pragma once

#include "platform/CredentialStore.h"

// The credential store on the desktop's Secret Service (GNOME Keyring, KWallet,
// KeePassXC) through libsecret's asynchronous calls, answered on the main thread's
// GLib main context, which Qt's event dispatcher runs. Items carry the attributes
// "service" and "account" and live in the default collection. Only unlock() unlocks
// or shows a prompt; every other call gives up after a few seconds, so a stuck
// service never holds up a dictation. Status numbers are libsecret's GError codes.
class SecretServiceCredentialStore : public CredentialStore
{
public:
    QCoro::Task<Result> update(QString service, QString account, QByteArray value) override;
    QCoro::Task<Result> add(QString service, QString account, QByteArray value) override;
    QCoro::Task<Result> copy(QString service, QString account) override;
    QCoro::Task<Result> exists(QString service, QString account) override;
    QCoro::Task<Result> remove(QString service, QString account) override;
    QCoro::Task<Result> defaultCollection() override;
    QCoro::Task<Result> unlock(QString service, QString account) override;
};
