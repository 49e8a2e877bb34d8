#pragma once

#include <QByteArray>
#include <QString>

// Generic-password items keyed by service and account. No call ever prompts the user
// or blocks for long; a locked store answers interactionNotAllowed instead.
class CredentialStore
{
public:
    enum class Outcome {
        success,
        itemNotFound,
        interactionNotAllowed, // locked and we may not prompt
        serviceUnavailable,    // no credential service is running at all
        failure,
    };

    struct Result {
        Outcome outcome = Outcome::success;
        int status = 0; // the platform's status or error code
    };

    CredentialStore() = default;
    CredentialStore(const CredentialStore &) = delete;
    CredentialStore &operator=(const CredentialStore &) = delete;
    virtual ~CredentialStore() = default;

    // Replaces the value of an existing item; itemNotFound when there is none.
    virtual Result update(const QString &service, const QString &account, const QByteArray &value) = 0;
    // Creates the item in the default store; fails when that store is locked or missing.
    virtual Result add(const QString &service, const QString &account, const QByteArray &value) = 0;
    // Reads the value; interactionNotAllowed when the item exists but is locked.
    virtual Result copy(const QString &service, const QString &account, QByteArray *value) = 0;
    // Whether the item exists, without unlocking; interactionNotAllowed when it is locked.
    virtual Result exists(const QString &service, const QString &account) = 0;
    // Deletes the item; itemNotFound when there was none.
    virtual Result remove(const QString &service, const QString &account) = 0;
    // The store new items go to: success when it is open, interactionNotAllowed when it
    // is locked, itemNotFound when there is none. Never unlocks.
    virtual Result defaultCollection() = 0;
};
