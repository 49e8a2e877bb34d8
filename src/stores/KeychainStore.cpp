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
    QString text = message.arg(result.status);
    // Without any credential service the status alone tells the user nothing.
    if (result.outcome == Outcome::serviceUnavailable && !m_words.credentialServiceUnavailable.isEmpty())
        text += QLatin1Char(' ') + m_words.credentialServiceUnavailable;
    return QuorlaError::keychainFailure(text);
}

void KeychainStore::saveString(const QString &value, const QString &account)
{
    const QByteArray data = value.toUtf8();
    const auto updated = m_store->update(m_service, account, data);
    if (updated.outcome == Outcome::success)
        return;
    if (updated.outcome != Outcome::itemNotFound)
        throw failure(m_words.credentialUpdateFailure, updated);
    const auto added = m_store->add(m_service, account, data);
    if (added.outcome != Outcome::success)
        throw failure(m_words.credentialSaveFailure, added);
}

std::optional<QString> KeychainStore::loadString(const QString &account)
{
    QByteArray data;
    const auto result = m_store->copy(m_service, account, &data);
    switch (result.outcome) {
    case Outcome::success: {
        // A leading byte-order mark is part of the stored value, not a hint.
        QStringDecoder decoder(QStringDecoder::Utf8,
                               QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        const QString text = decoder.decode(data);
        if (decoder.hasError())
            return std::nullopt;
        return text;
    }
    case Outcome::itemNotFound:
    case Outcome::interactionNotAllowed:
        return std::nullopt;
    case Outcome::serviceUnavailable:
    case Outcome::failure:
        break;
    }
    throw failure(m_words.credentialReadFailure, result);
}

bool KeychainStore::contains(const QString &account)
{
    const auto result = m_store->exists(m_service, account);
    if (result.outcome == Outcome::success)
        return true;
    if (result.outcome == Outcome::itemNotFound)
        return false;
    throw failure(m_words.credentialCheckFailure, result);
}

void KeychainStore::deleteItem(const QString &account)
{
    const auto result = m_store->remove(m_service, account);
    if (result.outcome == Outcome::success || result.outcome == Outcome::itemNotFound)
        return;
    throw failure(m_words.credentialDeleteFailure, result);
}
