#pragma once

#include "platform/CredentialStore.h"

#include <QHash>
#include <optional>

// An in-memory credential store; a test can make every call fail with one result.
class FakeCredentialStore : public CredentialStore
{
public:
    Result update(const QString &service, const QString &account, const QByteArray &value) override
    {
        if (failure)
            return *failure;
        const QString key = service + QLatin1Char('/') + account;
        if (!items.contains(key))
            return {Outcome::itemNotFound, 0};
        items.insert(key, value);
        return {};
    }
    Result add(const QString &service, const QString &account, const QByteArray &value) override
    {
        if (failure)
            return *failure;
        items.insert(service + QLatin1Char('/') + account, value);
        return {};
    }
    Result copy(const QString &service, const QString &account, QByteArray *value) override
    {
        if (failure)
            return *failure;
        const auto found = items.constFind(service + QLatin1Char('/') + account);
        if (found == items.constEnd())
            return {Outcome::itemNotFound, 0};
        *value = *found;
        return {};
    }
    Result exists(const QString &service, const QString &account) override
    {
        if (failure)
            return *failure;
        return items.contains(service + QLatin1Char('/') + account) ? Result{} : Result{Outcome::itemNotFound, 0};
    }
    Result remove(const QString &service, const QString &account) override
    {
        if (failure)
            return *failure;
        return items.remove(service + QLatin1Char('/') + account) ? Result{} : Result{Outcome::itemNotFound, 0};
    }

    QHash<QString, QByteArray> items;
    std::optional<Result> failure;
};
