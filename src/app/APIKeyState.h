#pragma once

#include <QString>
#include <optional>

// The OpenAI API key as the model holds it: the text in the key field, the saved key
// once it has been read from the credential store, and whether one is saved.
struct APIKeyState {
    QString draft;
    std::optional<QString> savedKey;
    bool hasStoredKey = false;

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
