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
                      remove,
                      unlock };

    // Answers at once, as a store on a fast bus would.
    QCoro::Task<Result> update(QString service, QString account, QByteArray value) override
    {
        if (!items.contains(key(service, account)))
            co_return planned(Call::update, {Outcome::itemNotFound, 0});
        co_return changed(Call::update, [&] { items.insert(key(service, account), value); });
    }
    QCoro::Task<Result> add(QString service, QString account, QByteArray value) override
    {
        co_return changed(Call::add, [&] { items.insert(key(service, account), value); });
    }
    QCoro::Task<Result> copy(QString service, QString account) override
    {
        if (!items.contains(key(service, account)))
            co_return planned(Call::copy, {Outcome::itemNotFound, 0});
        Result read = changed(Call::copy, [] {});
        if (read.outcome == Outcome::success)
            read.value = items.value(key(service, account));
        co_return read;
    }
    QCoro::Task<Result> exists(QString service, QString account) override
    {
        co_return planned(Call::exists, items.contains(key(service, account)) ? Result{} : Result{Outcome::itemNotFound, 0});
    }
    QCoro::Task<Result> remove(QString service, QString account) override
    {
        if (!items.contains(key(service, account)))
            co_return planned(Call::remove, {Outcome::itemNotFound, 0});
        co_return changed(Call::remove, [&] { items.remove(key(service, account)); });
    }
    QCoro::Task<Result> defaultCollection() override { co_return failure.value_or(collection); }
    // The user answers the prompt by unlocking: every planned failure goes.
    QCoro::Task<Result> unlock(QString, QString) override
    {
        const Result answer = planned(Call::unlock, Result{});
        if (answer.outcome == Outcome::success)
            failure.reset(), failures.clear();
        co_return answer;
    }

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
