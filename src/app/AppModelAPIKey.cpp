// The OpenAI API key: the draft, the saved item in the credential store and the
// "hasStoredAPIKey" marker that lets the interface show the saved state at launch.
#include "AppModel.h"

#include "models/QuorlaError.h"
#include "stores/KeychainStore.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

void AppModel::saveAPIKey()
{
    const QString key = m_apiKey.draft.trimmed();
    setErrorMessage(std::nullopt);
    auto &keychain = *m_services.keychainStore;
    try {
        if (!key.isEmpty()) {
            keychain.saveString(key, KeychainStore::apiKeyAccount());
            setApiKeyDraft(QString());
            rememberSavedAPIKey(key);
            setStatusMessage(m_services.words->apiKeySavedStatus);
        } else {
            keychain.deleteItem(KeychainStore::apiKeyAccount());
            setApiKeyDraft(QString());
            rememberSavedAPIKey(std::nullopt);
            setStatusMessage(QStringLiteral("Saved API key removed."));
        }
    } catch (...) {
        presentError(localizedMessage(std::current_exception()));
        setStatusMessage(QStringLiteral("Couldn't save the API key."));
    }
}

void AppModel::clearAPIKey()
{
    setErrorMessage(std::nullopt);
    try {
        m_services.keychainStore->deleteItem(KeychainStore::apiKeyAccount());
    } catch (...) {
        presentError(localizedMessage(std::current_exception()));
        setStatusMessage(QStringLiteral("Couldn't remove the saved API key."));
        return;
    }
    rememberSavedAPIKey(std::nullopt);
    setStatusMessage(QStringLiteral("Saved API key removed."));
}

QString AppModel::validatedAPIKey()
{
    if (const std::optional<QString> known = m_apiKey.knownKey())
        return *known;
    // A read failure propagates as it is; only a definite answer changes the saved state.
    QString stored =
        m_services.keychainStore->loadString(KeychainStore::apiKeyAccount()).value_or(QString()).trimmed();
    rememberSavedAPIKey(stored.isEmpty() ? std::nullopt : std::optional(stored));
    if (stored.isEmpty())
        throw QuorlaError(QuorlaError::Kind::missingAPIKey);
    return stored;
}

void AppModel::rememberSavedAPIKey(const std::optional<QString> &key)
{
    m_apiKey.savedKey = key;
    // The marker is written only when the saved state really changed, so reading the
    // key again writes nothing.
    if (m_apiKey.hasStoredKey == key.has_value())
        return;
    setHasStoredAPIKey(key.has_value());
    m_services.preferences->setBool(PreferenceKeys::hasStoredAPIKey, key.has_value());
}

void AppModel::loadStoredAPIKeyMetadata()
{
    const bool marker = m_services.preferences->boolValue(PreferenceKeys::hasStoredAPIKey).value_or(false);
    bool exists = false;
    try {
        // Only whether the item exists: the key itself is read by the first request.
        exists = m_services.keychainStore->contains(KeychainStore::apiKeyAccount());
    } catch (...) {
        setHasStoredAPIKey(marker);
        return;
    }
    setHasStoredAPIKey(marker || exists);
    m_services.preferences->setBool(PreferenceKeys::hasStoredAPIKey, marker || exists);
}
