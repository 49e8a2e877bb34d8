#pragma once

#include "platform/CredentialStore.h"

#include <QHash>
#include <QMap>
#include <optional>

// An in-memory credential store; a test can make every call, or one kind of call,
// fail with a given result.
class FakeCredentialStore : public CredentialStore
{
public:
    enum class Call { update, add, copy, exists, remove };

    Result update(const QString &service, const QString &account, const QByteArray &value) override
    {
        if (auto planned = plannedFailure(Call::update))
            return *planned;
        const QString key = service + QLatin1Char('/') + account;
        if (!items.contains(key))
            return {Outcome::itemNotFound, 0};
        items.insert(key, value);
        return {};
    }
    Result add(const QString &service, const QString &account, const QByteArray &value) override
    {
        if (auto planned = plannedFailure(Call::add))
            return *planned;
        items.insert(service + QLatin1Char('/') + account, value);
        return {};
    }
    Result copy(const QString &service, const QString &account, QByteArray *value) override
    {
        if (auto planned = plannedFailure(Call::copy))
            return *planned;
        const auto found = items.constFind(service + QLatin1Char('/') + account);
        if (found == items.constEnd())
            return {Outcome::itemNotFound, 0};
        *value = *found;
        return {};
    }
    Result exists(const QString &service, const QString &account) override
    {
        if (auto planned = plannedFailure(Call::exists))
            return *planned;
        return items.contains(service + QLatin1Char('/') + account) ? Result{} : Result{Outcome::itemNotFound, 0};
    }
    Result remove(const QString &service, const QString &account) override
    {
        if (auto planned = plannedFailure(Call::remove))
            return *planned;
        return items.remove(service + QLatin1Char('/') + account) ? Result{} : Result{Outcome::itemNotFound, 0};
    }

    Result defaultCollection() override { return failure.value_or(collection); }

    QHash<QString, QByteArray> items;
    Result collection; // what defaultCollection() answers
    std::optional<Result> failure;
    QMap<Call, Result> failures;

private:
    std::optional<Result> plannedFailure(Call call) const
    {
        if (failure)
            return failure;
        const auto found = failures.constFind(call);
        return found == failures.constEnd() ? std::nullopt : std::optional(*found);
    }
};
