#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <optional>

// Language names from the Unicode locale data (CLDR through ICU): Qt can name a
// language only in English or in itself, not in the user's language.

// The platform's ISO 639 codes that are exactly two letters long, sorted.
const QStringList &twoLetterISOLanguageCodes();

// The name of the language `code` in `locale`; absent when the locale data has none.
std::optional<QString> languageDisplayName(const QString &code, const QLocale &locale);
