#pragma once

#include "platform/CredentialStore.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <memory>

class QuorlaError;
struct PlatformWords;

// Keeps the OpenAI API key as a generic-password item of the credential store.
// Every failure is a QuorlaError::keychainFailure carrying the platform's status, or
// keychainLocked when the store must be unlocked first. Made once at start-up; keeps
// no state of its own, so a failure leaves nothing behind.
class KeychainStore
{
public:
    // What the store holds under an account. A locked item is neither there nor gone.
    enum class ItemState { present,
                           absent,
                           locked };
    struct StoredString {
        ItemState state = ItemState::absent;
        QString value;
    };

    KeychainStore(std::shared_ptr<CredentialStore> store, QString service, const PlatformWords &words);

    [[nodiscard]] const QString &service() const { return m_service; }
    [[nodiscard]] static QString apiKeyAccount() { return QStringLiteral("openai-api-key"); }

    // Updates the item's value, or adds the item when there is none.
    QCoro::Task<> saveString(QString value, QString account);
    // A value that is not valid UTF-8 reads as absent.
    QCoro::Task<StoredString> loadString(QString account);
    // Never unlocks.
    QCoro::Task<ItemState> contains(QString account);
    // Deleting a missing item succeeds.
    QCoro::Task<> deleteItem(QString account);
    // Asks the user, through the store's own prompt, to unlock what holds the item;
    // false when they dismissed it.
    QCoro::Task<bool> unlock(QString account);

private:
    [[nodiscard]] QuorlaError failure(const QString &message, const CredentialStore::Result &result) const;

    std::shared_ptr<CredentialStore> m_store;
    QString m_service;
    const PlatformWords &m_words;
};
