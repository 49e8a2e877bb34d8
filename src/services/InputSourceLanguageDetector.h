#pragma once

#include "models/InputLanguageHint.h"

#include <QHash>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

class InputSourceProvider;

// Derives the dictation language from the selected keyboard input source: its one
// listed language when it lists exactly one, else a language or alias named in its
// identifiers or its name. Stateless; no network.
class InputSourceLanguageDetector
{
public:
    explicit InputSourceLanguageDetector(std::shared_ptr<InputSourceProvider> provider);

    // The hint for the selected source in the user's current locale; absent when none can be derived.
    [[nodiscard]] std::optional<InputLanguageHint> currentLanguageHint() const;
    // Whether any input source can be read now.
    [[nodiscard]] bool hasInputSource() const;
    // onChange runs on the main thread after every change of the selected source.
    void startObservingChanges(std::function<void()> onChange);

    // "en-US", "en_GB", "zh-Hans" give en, en, zh; anything not two letters gives absent.
    static std::optional<QString> normalizedISO639LanguageCode(const QString &tag);
    // Run-together and reverse-domain names split into lower-case words.
    static std::optional<QString> normalizedSearchText(const QString &text);
    // Search text → code, for layouts and input methods whose names say no language.
    static const QList<std::pair<QString, QString>> &explicitLanguageAliases();
    // Language name (as search text) → code, for every two-letter code the locale names.
    static QHash<QString, QString> localizedLanguageNames(const QLocale &locale);

    static InputLanguageHint makeLanguageHint(const QString &code, const QLocale &locale);
    // The one distinct valid code among the tags, else absent.
    static std::optional<QString> exactLanguageCode(const QStringList &languageTags);
    // The language named by whole words of the search texts: aliases and the names in
    // `locale` and in English; the longest matching text wins, then the lower code.
    static std::optional<QString> matchedLanguageCode(const QStringList &searchTexts, const QLocale &locale);

private:
    std::shared_ptr<InputSourceProvider> m_provider;
};
