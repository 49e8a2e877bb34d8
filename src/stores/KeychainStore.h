#pragma once

#include "platform/CredentialStore.h"

#include <QString>
#include <memory>
#include <optional>

class QuorlaError;
struct PlatformWords;

// Keeps the OpenAI API key as a generic-password item of the credential store.
// Every failure is a QuorlaError::keychainFailure carrying the platform's status.
// Made once at start-up; keeps no state of its own, so a failure leaves nothing behind.
class KeychainStore
{
public:
    KeychainStore(std::shared_ptr<CredentialStore> store, QString service, const PlatformWords &words);

    [[nodiscard]] const QString &service() const { return m_service; }
    [[nodiscard]] static QString apiKeyAccount() { return QStringLiteral("openai-api-key"); }

    // Updates the item's value, or adds the item when there is none.
    void saveString(const QString &value, const QString &account);
    // Absent for a missing or locked item and for a value that is not valid UTF-8.
    [[nodiscard]] std::optional<QString> loadString(const QString &account);
    // Never unlocks: a locked item is a failure, not an answer.
    [[nodiscard]] bool contains(const QString &account);
    // Deleting a missing item succeeds.
    void deleteItem(const QString &account);

private:
    [[nodiscard]] QuorlaError failure(const QString &message, const CredentialStore::Result &result) const;

    std::shared_ptr<CredentialStore> m_store;
    QString m_service;
    const PlatformWords &m_words;
};
