#pragma once

#include <QByteArray>
#include <QString>

// Generic-password items keyed by service and account. No call ever prompts the user.
class CredentialStore
{
public:
    enum class Outcome {
        success,
        itemNotFound,
        interactionNotAllowed, // locked and we may not prompt
        failure,
    };

    struct Result {
        Outcome outcome = Outcome::success;
        int status = 0; // the platform's status or error code
    };

    virtual ~CredentialStore() = default;

    virtual Result update(const QString &service, const QString &account, const QByteArray &value) = 0;
    virtual Result add(const QString &service, const QString &account, const QByteArray &value) = 0;
    virtual Result copy(const QString &service, const QString &account, QByteArray *value) = 0;
    virtual Result exists(const QString &service, const QString &account) = 0;
    virtual Result remove(const QString &service, const QString &account) = 0;
};
