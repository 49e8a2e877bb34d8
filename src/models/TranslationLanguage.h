#pragma once

#include <QString>

// One selectable translation target.
struct TranslationLanguage {
    QString code;        // ISO 639-1, lower case
    QString displayName; // English name

    friend bool operator==(const TranslationLanguage &, const TranslationLanguage &) = default;
};
