#pragma once

#include "models/TranslationLanguage.h"

#include <QHash>
#include <QList>
#include <QString>
#include <optional>

// The selectable translation targets: every ISO 639-1 language of the locale data
// that has an English name. Built once, on first use; safe from any thread.
namespace TranslationLanguageCatalog {

const QList<TranslationLanguage> &all();
const QHash<QString, TranslationLanguage> &languagesByCode();

// The canonical stored form of a code, or absent when it is not a catalog language.
std::optional<QString> normalizedCode(const std::optional<QString> &code);

// Display order: names compared localized and case-insensitively, ties by code.
QList<TranslationLanguage> sortedForDisplay(QList<TranslationLanguage> languages);

} // namespace TranslationLanguageCatalog
