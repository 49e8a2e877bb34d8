#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QString>

// Generic-password items keyed by service and account. Every call answers on the
// event loop and never prompts the user, except unlock(), which exists to; a locked
// store answers interactionNotAllowed.
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
        Result() = default;
        Result(Outcome outcome, int status, QByteArray value = {})
            : outcome(outcome)
            , status(status)
            , value(std::move(value))
        {
        }

        Outcome outcome = Outcome::success;
        int status = 0;   // the platform's status or error code
        QByteArray value; // what copy() read
    };

    CredentialStore() = default;
    CredentialStore(const CredentialStore &) = delete;
    CredentialStore &operator=(const CredentialStore &) = delete;
    virtual ~CredentialStore() = default;

    // Replaces the value of an existing item; itemNotFound when there is none.
    virtual QCoro::Task<Result> update(QString service, QString account, QByteArray value) = 0;
    // Creates the item in the default store; fails when that store is locked or missing.
    virtual QCoro::Task<Result> add(QString service, QString account, QByteArray value) = 0;
    // Reads the value; interactionNotAllowed when the item exists but is locked.
    virtual QCoro::Task<Result> copy(QString service, QString account) = 0;
    // Whether the item exists, without unlocking; interactionNotAllowed when it is locked.
    virtual QCoro::Task<Result> exists(QString service, QString account) = 0;
    // Deletes the item; itemNotFound when there was none.
    virtual QCoro::Task<Result> remove(QString service, QString account) = 0;
    // The store new items go to: success when it is open, interactionNotAllowed when it
    // is locked, itemNotFound when there is none. Never unlocks.
    virtual QCoro::Task<Result> defaultCollection() = 0;
    // Asks the user, through the store's own prompt, to unlock what holds the item (the
    // default store when there is no item): success once it is open,
    // interactionNotAllowed when the prompt was dismissed. Waits as long as the user does.
    virtual QCoro::Task<Result> unlock(QString service, QString account) = 0;
};
