#include "KeychainStore.h"

#include "models/QuorlaError.h"
#include "platform/CredentialStore.h"
#include "support/PlatformWords.h"

#include <QStringDecoder>

using Outcome = CredentialStore::Outcome;
using Result = CredentialStore::Result;

KeychainStore::KeychainStore(std::shared_ptr<CredentialStore> store, QString service, const PlatformWords &words)
    : m_store(std::move(store))
    , m_service(std::move(service))
    , m_words(words)
{
}

QuorlaError KeychainStore::failure(const QString &message, const Result &result) const
{
    if (result.outcome == Outcome::interactionNotAllowed)
        return QuorlaError(QuorlaError::Kind::keychainLocked);
    QString text = message.arg(result.status);
    // Without any credential service the status alone tells the user nothing.
    if (result.outcome == Outcome::serviceUnavailable && !m_words.credentialServiceUnavailable.isEmpty())
        text += QLatin1Char(' ') + m_words.credentialServiceUnavailable;
    return QuorlaError::keychainFailure(text);
}

QCoro::Task<> KeychainStore::saveString(QString value, QString account)
{
    const QByteArray data = value.toUtf8();
    const Result updated = co_await m_store->update(m_service, account, data);
    if (updated.outcome == Outcome::success)
        co_return;
    if (updated.outcome != Outcome::itemNotFound)
        throw failure(m_words.credentialUpdateFailure, updated);
    const Result added = co_await m_store->add(m_service, account, data);
    if (added.outcome != Outcome::success)
        throw failure(m_words.credentialSaveFailure, added);
}

QCoro::Task<KeychainStore::StoredString> KeychainStore::loadString(QString account)
{
    const Result result = co_await m_store->copy(m_service, account);
    switch (result.outcome) {
    case Outcome::success: {
        // A leading byte-order mark is part of the stored value, not a hint.
        QStringDecoder decoder(QStringDecoder::Utf8,
                               QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        QString text = decoder.decode(result.value);
        if (decoder.hasError())
            co_return StoredString{};
        co_return StoredString{ItemState::present, std::move(text)};
    }
    case Outcome::itemNotFound:
        co_return StoredString{};
    case Outcome::interactionNotAllowed:
        co_return StoredString{ItemState::locked, QString()};
    case Outcome::serviceUnavailable:
    case Outcome::failure:
        break;
    }
    throw failure(m_words.credentialReadFailure, result);
}

QCoro::Task<KeychainStore::ItemState> KeychainStore::contains(QString account)
{
    const Result result = co_await m_store->exists(m_service, account);
    switch (result.outcome) {
    case Outcome::success:
        co_return ItemState::present;
    case Outcome::itemNotFound:
        co_return ItemState::absent;
    case Outcome::interactionNotAllowed:
        co_return ItemState::locked;
    case Outcome::serviceUnavailable:
    case Outcome::failure:
        break;
    }
    throw failure(m_words.credentialCheckFailure, result);
}

QCoro::Task<> KeychainStore::deleteItem(QString account)
{
    const Result result = co_await m_store->remove(m_service, account);
    if (result.outcome != Outcome::success && result.outcome != Outcome::itemNotFound)
        throw failure(m_words.credentialDeleteFailure, result);
}

QCoro::Task<bool> KeychainStore::unlock(QString account)
{
    const Result result = co_await m_store->unlock(m_service, account);
    if (result.outcome == Outcome::success)
        co_return true;
    if (result.outcome == Outcome::interactionNotAllowed)
        co_return false;
    throw failure(m_words.credentialUnlockFailure, result);
}
