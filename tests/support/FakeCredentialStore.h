#pragma once

#include "platform/CredentialStore.h"

#include <QHash>
#include <QMap>
#include <functional>
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
        co_return answer(Call::update, key(service, account), [&] { items.insert(key(service, account), value); });
    }
    QCoro::Task<Result> add(QString service, QString account, QByteArray value) override
    {
        co_return answer(Call::add, {}, [&] { items.insert(key(service, account), value); });
    }
    QCoro::Task<Result> copy(QString service, QString account) override
    {
        Result read = answer(Call::copy, key(service, account), [] {});
        if (read.outcome == Outcome::success)
            read.value = items.value(key(service, account));
        co_return read;
    }
    QCoro::Task<Result> exists(QString service, QString account) override
    {
        co_return answer(Call::exists, key(service, account), [] {});
    }
    QCoro::Task<Result> remove(QString service, QString account) override
    {
        co_return answer(Call::remove, key(service, account), [&] { items.remove(key(service, account)); });
    }
    QCoro::Task<Result> defaultCollection() override { co_return failure.value_or(collection); }
    // The user answers the prompt by unlocking: every planned failure goes.
    QCoro::Task<Result> unlock(QString, QString) override
    {
        co_return answer(Call::unlock, {}, [this] { failure.reset(), failures.clear(); });
    }

    QHash<QString, QByteArray> items;
    Result collection; // what defaultCollection() answers
    std::optional<Result> failure;
    QMap<Call, Result> failures;

private:
    static QString key(const QString &service, const QString &account) { return service + QLatin1Char('/') + account; }
    // The planned failure if there is one, else itemNotFound when the call needs an item
    // that is missing, else success after the change.
    Result answer(Call call, const QString &neededItem, const std::function<void()> &change)
    {
        if (failure || failures.contains(call))
            return failure.value_or(failures.value(call));
        if (!neededItem.isEmpty() && !items.contains(neededItem))
            return {Outcome::itemNotFound, 0};
        change();
        return {};
    }
};
