// The OpenAI API key: the draft, the saved item in the credential store and the
// "hasStoredAPIKey" marker that lets the interface show the saved state at launch.
#include "AppModel.h"

#include "models/QuorlaError.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

namespace PreferenceKey {
const QString hasStoredAPIKey = QStringLiteral("hasStoredAPIKey");
} // namespace PreferenceKey

void AppModel::saveAPIKey()
{
    const QString key = m_apiKeyDraft.trimmed();
    setErrorMessage(std::nullopt);
    auto &keychain = *m_services.keychainStore;
    try {
        if (!key.isEmpty()) {
            keychain.saveString(key, KeychainStore::apiKeyAccount());
            setApiKeyDraft(QString());
            m_cachedAPIKey = key;
            setHasStoredAPIKey(true);
            m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, true);
            setStatusMessage(m_services.words->apiKeySavedStatus);
        } else {
            keychain.deleteItem(KeychainStore::apiKeyAccount());
            setApiKeyDraft(QString());
            m_cachedAPIKey.reset();
            setHasStoredAPIKey(false);
            m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, false);
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
    m_cachedAPIKey.reset();
    setHasStoredAPIKey(false);
    m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, false);
    setStatusMessage(QStringLiteral("Saved API key removed."));
}

QString AppModel::validatedAPIKey()
{
    // An unsaved key typed into the field is used as it stands.
    QString draft = m_apiKeyDraft.trimmed();
    if (!draft.isEmpty())
        return draft;
    if (m_cachedAPIKey && !m_cachedAPIKey->isEmpty())
        return *m_cachedAPIKey;

    // A read failure propagates as it is; only a definite answer changes the saved state.
    const std::optional<QString> stored = m_services.keychainStore->loadString(KeychainStore::apiKeyAccount());
    QString key = stored.value_or(QString()).trimmed();
    if (!key.isEmpty()) {
        m_cachedAPIKey = key;
        setHasStoredAPIKey(true);
        m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, true);
        return key;
    }
    m_cachedAPIKey.reset();
    setHasStoredAPIKey(false);
    m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, false);
    throw QuorlaError(QuorlaError::Kind::missingAPIKey);
}

void AppModel::loadStoredAPIKeyMetadata()
{
    const bool marker = m_services.preferences->boolValue(PreferenceKey::hasStoredAPIKey).value_or(false);
    bool exists = false;
    try {
        // Only whether the item exists: the key itself is read by the first request.
        exists = m_services.keychainStore->contains(KeychainStore::apiKeyAccount());
    } catch (...) {
        setHasStoredAPIKey(marker);
        return;
    }
    setHasStoredAPIKey(marker || exists);
    m_services.preferences->setBool(PreferenceKey::hasStoredAPIKey, marker || exists);
}
