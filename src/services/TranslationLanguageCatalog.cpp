#include "TranslationLanguageCatalog.h"

#include <QCollator>
#include <QLocale>
#include <QRegularExpression>
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

std::optional<TranslationLanguage> translationLanguage(const std::optional<QString> &code)
{
    const auto normalized = normalizedCode(code);
    if (!normalized)
        return std::nullopt;
    const auto &byCode = languagesByCode();
    const auto found = byCode.constFind(*normalized);
    return found == byCode.constEnd() ? std::nullopt : std::optional(*found);
}

bool shouldTranslateTranscript(const std::optional<TranslationLanguage> &target,
                               const std::optional<InputLanguageHint> &source)
{
    static const QRegularExpression twoLetters(QStringLiteral("^[a-z]{2}$"));
    if (!target)
        return false;
    const QString targetCode = target->code.trimmed().toLower();
    if (!twoLetters.match(targetCode).hasMatch())
        return false;
    if (!source)
        return true;
    const QString sourceCode = source->code.trimmed().toLower();
    if (!twoLetters.match(sourceCode).hasMatch())
        return true;
    return targetCode != sourceCode;
}

} // namespace TranslationLanguageCatalog
