// The OpenAI API key: the draft, the saved item in the credential store and the
// "hasStoredAPIKey" marker that lets the interface show the saved state at launch.
// The store answers later, on the event loop: every step re-checks the model after it.
#include "AppModel.h"

#include "models/QuorlaError.h"
#include "stores/KeychainStore.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

#include <QPointer>

using ItemState = KeychainStore::ItemState;

void AppModel::saveAPIKey()
{
    storeAPIKeyDraft();
}

void AppModel::clearAPIKey()
{
    removeSavedAPIKey();
}

void AppModel::unlockKeychain()
{
    unlockSavedAPIKey();
}

bool AppModel::presentedKeychainFailure(const std::exception_ptr &failure, const QString &status)
{
    if (!failure)
        return false;
    noteKeychainFailure(failure);
    presentError(localizedMessage(failure));
    setStatusMessage(status);
    return true;
}

QCoro::Task<> AppModel::storeAPIKeyDraft()
{
    const QString key = m_apiKey.draft.trimmed();
    setErrorMessage(std::nullopt);
    const QPointer<AppModel> self(this);
    const auto keychain = m_services.keychainStore;
    std::exception_ptr failure;
    try {
        if (!key.isEmpty())
            co_await keychain->saveString(key, KeychainStore::apiKeyAccount());
        else
            co_await keychain->deleteItem(KeychainStore::apiKeyAccount());
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (presentedKeychainFailure(failure, QStringLiteral("Couldn't save the API key.")))
        co_return;
    setApiKeyDraft(QString());
    rememberSavedAPIKey(key.isEmpty() ? std::nullopt : std::optional(key));
    setIsKeychainLocked(false);
    setStatusMessage(key.isEmpty() ? QStringLiteral("Saved API key removed.") : m_services.words->apiKeySavedStatus);
}

QCoro::Task<> AppModel::removeSavedAPIKey()
{
    setErrorMessage(std::nullopt);
    const QPointer<AppModel> self(this);
    const auto keychain = m_services.keychainStore;
    std::exception_ptr failure;
    try {
        co_await keychain->deleteItem(KeychainStore::apiKeyAccount());
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (presentedKeychainFailure(failure, QStringLiteral("Couldn't remove the saved API key.")))
        co_return;
    rememberSavedAPIKey(std::nullopt);
    setIsKeychainLocked(false);
    setStatusMessage(QStringLiteral("Saved API key removed."));
}

QCoro::Task<> AppModel::unlockSavedAPIKey()
{
    setErrorMessage(std::nullopt);
    const QPointer<AppModel> self(this);
    const auto keychain = m_services.keychainStore;
    bool unlocked = false;
    std::exception_ptr failure;
    try {
        unlocked = co_await keychain->unlock(KeychainStore::apiKeyAccount());
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (failure) {
        presentError(localizedMessage(failure));
        co_return;
    }
    setIsKeychainLocked(!unlocked);
    setStatusMessage(unlocked ? m_services.words->credentialStoreUnlockedStatus
                              : m_services.words->credentialStoreStillLockedStatus);
    // Whether a key is saved may only now be known; the key itself is read by the next
    // dictation, as at launch.
    if (unlocked)
        co_await loadStoredAPIKeyMetadata();
}

QCoro::Task<APIKeyLookup> AppModel::validatedAPIKey() const
{
    if (const std::optional<QString> known = m_apiKey.knownKey())
        co_return APIKeyLookup{*known, std::nullopt};
    const auto keychain = m_services.keychainStore;
    // A read failure propagates as it is.
    const KeychainStore::StoredString stored = co_await keychain->loadString(KeychainStore::apiKeyAccount());
    const QString key = stored.value.trimmed();
    // A blank item is as good as none.
    co_return APIKeyLookup{key, key.isEmpty() && stored.state == ItemState::present ? ItemState::absent : stored.state};
}

QCoro::Task<QString> AppModel::apiKeyForRequest()
{
    const QPointer<AppModel> self(this);
    const APIKeyLookup lookup = co_await validatedAPIKey();
    if (!self)
        co_return lookup.key;
    rememberAPIKeyLookup(lookup);
    if (lookup.stored == ItemState::locked)
        throw QuorlaError(QuorlaError::Kind::keychainLocked);
    if (lookup.key.isEmpty())
        throw QuorlaError(QuorlaError::Kind::missingAPIKey);
    co_return lookup.key;
}

void AppModel::rememberAPIKeyLookup(const APIKeyLookup &lookup)
{
    if (!lookup.stored)
        return;
    // Locked is neither saved nor gone: the saved state stays as it was.
    setIsKeychainLocked(*lookup.stored == ItemState::locked);
    if (*lookup.stored != ItemState::locked)
        rememberSavedAPIKey(*lookup.stored == ItemState::present ? std::optional(lookup.key) : std::nullopt);
}

void AppModel::noteKeychainFailure(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const QuorlaError &quorla) {
        if (quorla.kind() == QuorlaError::Kind::keychainLocked)
            setIsKeychainLocked(true);
    } catch (...) {
    }
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

QCoro::Task<> AppModel::checkStoredAPIKeyAtLaunch()
{
    const QPointer<AppModel> self(this);
    co_await loadStoredAPIKeyMetadata();
    if (!self)
        co_return;
    m_hasCheckedStoredAPIKey = true;
    Q_EMIT storedAPIKeyChecked();
}

QCoro::Task<> AppModel::loadStoredAPIKeyMetadata()
{
    const bool marker = m_services.preferences->boolValue(PreferenceKeys::hasStoredAPIKey).value_or(false);
    setHasStoredAPIKey(marker);
    const QPointer<AppModel> self(this);
    const auto keychain = m_services.keychainStore;
    std::optional<ItemState> state;
    try {
        // Only whether the item exists: the key itself is read by the first request.
        state = co_await keychain->contains(KeychainStore::apiKeyAccount());
    } catch (...) {
    }
    // A failed check, or a locked store, keeps the marker and writes nothing.
    if (!self || !state)
        co_return;
    keepingDefaultStatus([&] {
        setIsKeychainLocked(*state == ItemState::locked);
        if (*state == ItemState::locked)
            return;
        const bool saved = marker || *state == ItemState::present;
        setHasStoredAPIKey(saved);
        m_services.preferences->setBool(PreferenceKeys::hasStoredAPIKey, saved);
    });
}
