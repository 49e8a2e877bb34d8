#pragma once

#include "models/InputLanguageHint.h"
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

// The catalog language of a stored or typed code; absent for none or an unknown one.
std::optional<TranslationLanguage> translationLanguage(const std::optional<QString> &code);

// Whether a transcript spoken in `source` must be translated into `target`: only into a
// two-letter language, and not when the speech is known to be in it already.
bool shouldTranslateTranscript(const std::optional<TranslationLanguage> &target,
                               const std::optional<InputLanguageHint> &source);

// Display order: names compared localized and case-insensitively, ties by code.
QList<TranslationLanguage> sortedForDisplay(QList<TranslationLanguage> languages);

} // namespace TranslationLanguageCatalog
