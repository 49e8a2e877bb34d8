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
    enum class Call { update,
                      add,
                      copy,
                      exists,
                      remove };

    Result update(const QString &service, const QString &account, const QByteArray &value) override
    {
        if (!items.contains(key(service, account)))
            return planned(Call::update, {Outcome::itemNotFound, 0});
        return changed(Call::update, [&] { items.insert(key(service, account), value); });
    }
    Result add(const QString &service, const QString &account, const QByteArray &value) override
    {
        return changed(Call::add, [&] { items.insert(key(service, account), value); });
    }
    Result copy(const QString &service, const QString &account, QByteArray *value) override
    {
        if (!items.contains(key(service, account)))
            return planned(Call::copy, {Outcome::itemNotFound, 0});
        return changed(Call::copy, [&] { *value = items.value(key(service, account)); });
    }
    Result exists(const QString &service, const QString &account) override
    {
        return planned(Call::exists, items.contains(key(service, account)) ? Result{} : Result{Outcome::itemNotFound, 0});
    }
    Result remove(const QString &service, const QString &account) override
    {
        if (!items.contains(key(service, account)))
            return planned(Call::remove, {Outcome::itemNotFound, 0});
        return changed(Call::remove, [&] { items.remove(key(service, account)); });
    }
    Result defaultCollection() override { return failure.value_or(collection); }

    QHash<QString, QByteArray> items;
    Result collection; // what defaultCollection() answers
    std::optional<Result> failure;
    QMap<Call, Result> failures;

private:
    static QString key(const QString &service, const QString &account) { return service + QLatin1Char('/') + account; }
    // The planned failure if there is one, else the answer (after the change, if any).
    Result planned(Call call, Result answer) const { return failure.value_or(failures.value(call, answer)); }
    template <typename Change>
    Result changed(Call call, Change change)
    {
        if (failure || failures.contains(call))
            return planned(call, Result{});
        change();
        return {};
    }
};
