#pragma once

#include <QString>
#include <memory>
#include <optional>

class CredentialStore;
struct PlatformWords;

// Keeps the OpenAI API key as a generic-password item of the credential store.
// Every failure is a QuorlaError::keychainFailure carrying the platform's status.
class KeychainStore
{
public:
    KeychainStore(std::shared_ptr<CredentialStore> store, QString service, const PlatformWords &words);

    [[nodiscard]] const QString &service() const { return m_service; }
    [[nodiscard]] static QString apiKeyAccount() { return QStringLiteral("openai-api-key"); }

    void saveString(const QString &value, const QString &account);
    [[nodiscard]] std::optional<QString> loadString(const QString &account);
    [[nodiscard]] bool contains(const QString &account);
    void deleteItem(const QString &account);

private:
    std::shared_ptr<CredentialStore> m_store;
    QString m_service;
    const PlatformWords &m_words;
};
