#pragma once

#include "stores/KeychainStore.h"

#include <QString>
#include <optional>

// What looking for the key found: the key to use (empty when there is none) and, when
// the credential store had to be asked, what it holds. The caller records it.
struct APIKeyLookup {
    QString key;
    std::optional<KeychainStore::ItemState> stored;
};

// The OpenAI API key as the model holds it: the text in the key field, the saved key
// once it has been read from the credential store, whether one is saved, and whether
// the store was locked when last asked.
struct APIKeyState {
    QString draft;
    std::optional<QString> savedKey;
    bool hasStoredKey = false;
    bool keychainLocked = false;

    // The key a request uses without asking the store: the typed draft wins, then the
    // saved key already read; absent when neither is there.
    [[nodiscard]] std::optional<QString> knownKey() const
    {
        const QString typed = draft.trimmed();
        if (!typed.isEmpty())
            return typed;
        if (savedKey && !savedKey->isEmpty())
            return savedKey;
        return std::nullopt;
    }
};
