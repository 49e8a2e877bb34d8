#include "KeychainStore.h"

#include "models/QuorlaError.h"
#include "platform/CredentialStore.h"
#include "support/PlatformWords.h"

#include <QStringDecoder>

using Outcome = CredentialStore::Outcome;

KeychainStore::KeychainStore(std::shared_ptr<CredentialStore> store, QString service, const PlatformWords &words)
    : m_store(std::move(store))
    , m_service(std::move(service))
    , m_words(words)
{
}

void KeychainStore::saveString(const QString &value, const QString &account)
{
    const QByteArray data = value.toUtf8();
    const auto updated = m_store->update(m_service, account, data);
    if (updated.outcome == Outcome::success)
        return;
    if (updated.outcome != Outcome::itemNotFound)
        throw QuorlaError::keychainFailure(m_words.credentialUpdateFailure.arg(updated.status));
    const auto added = m_store->add(m_service, account, data);
    if (added.outcome != Outcome::success)
        throw QuorlaError::keychainFailure(m_words.credentialSaveFailure.arg(added.status));
}

std::optional<QString> KeychainStore::loadString(const QString &account)
{
    QByteArray data;
    const auto result = m_store->copy(m_service, account, &data);
    switch (result.outcome) {
    case Outcome::success: {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder.decode(data);
        if (decoder.hasError())
            return std::nullopt;
        return text;
    }
    case Outcome::itemNotFound:
    case Outcome::interactionNotAllowed:
        return std::nullopt;
    case Outcome::failure:
        break;
    }
    throw QuorlaError::keychainFailure(m_words.credentialReadFailure.arg(result.status));
}

bool KeychainStore::contains(const QString &account)
{
    const auto result = m_store->exists(m_service, account);
    if (result.outcome == Outcome::success)
        return true;
    if (result.outcome == Outcome::itemNotFound)
        return false;
    throw QuorlaError::keychainFailure(m_words.credentialCheckFailure.arg(result.status));
}

void KeychainStore::deleteItem(const QString &account)
{
    const auto result = m_store->remove(m_service, account);
    if (result.outcome == Outcome::success || result.outcome == Outcome::itemNotFound)
        return;
    throw QuorlaError::keychainFailure(m_words.credentialDeleteFailure.arg(result.status));
}
