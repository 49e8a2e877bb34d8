#include "TranslationLanguageCatalog.h"

#include <QCollator>
#include <QLocale>
#include <QSet>
#include <algorithm>

namespace TranslationLanguageCatalog {

namespace {

QList<TranslationLanguage> buildAll()
{
    QSet<QString> seen;
    QList<TranslationLanguage> languages;
    for (int value = QLocale::AnyLanguage + 1; value <= QLocale::LastLanguage; ++value) {
        const auto language = static_cast<QLocale::Language>(value);
        const QString code = QLocale::languageToCode(language, QLocale::ISO639Part1);
        if (code.size() != 2 || seen.contains(code))
            continue;
        const QString name = QLocale::languageToString(language).trimmed();
        if (name.isEmpty())
            continue;
        seen.insert(code);
        languages.append({code, name});
    }
    return sortedForDisplay(std::move(languages));
}

} // namespace

QList<TranslationLanguage> sortedForDisplay(QList<TranslationLanguage> languages)
{
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(languages.begin(), languages.end(),
                     [&collator](const TranslationLanguage &a, const TranslationLanguage &b) {
                         const int order = collator.compare(a.displayName, b.displayName);
                         return order != 0 ? order < 0 : a.code < b.code;
                     });
    return languages;
}

const QList<TranslationLanguage> &all()
{
    static const QList<TranslationLanguage> languages = buildAll();
    return languages;
}

const QHash<QString, TranslationLanguage> &languagesByCode()
{
    static const QHash<QString, TranslationLanguage> byCode = [] {
        QHash<QString, TranslationLanguage> map;
        for (const TranslationLanguage &language : all())
            map.insert(language.code, language);
        return map;
    }();
    return byCode;
}

std::optional<QString> normalizedCode(const std::optional<QString> &code)
{
    if (!code)
        return std::nullopt;
    const QString candidate = code->trimmed().toLower();
    if (candidate.isEmpty() || !languagesByCode().contains(candidate))
        return std::nullopt;
    return candidate;
}

} // namespace TranslationLanguageCatalog
