#include "CustomDictionary.h"

#include <QRegularExpression>
#include <QSet>
#include <QStringList>

std::optional<QString> normalizedCustomDictionaryText(const QString &text)
{
    // Line breaks fold into one space; spaces and tabs inside a line stay as typed.
    static const QRegularExpression newlines(QStringLiteral("[\\n\\x{0B}\\f\\r\\x{85}\\x{2028}\\x{2029}]"));
    QStringList lines;
    for (const QString &line : text.split(newlines)) {
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            lines.append(trimmed);
    }
    const QString joined = lines.join(QLatin1Char(' ')).trimmed();
    return joined.isEmpty() ? std::nullopt : std::optional(joined);
}

QString foldedCustomDictionaryKey(const QString &term)
{
    // Case and accents never make two entries different; the user's locale must not
    // change that either, so fold by Unicode data alone.
    const QString decomposed = term.normalized(QString::NormalizationForm_D);
    QString folded;
    folded.reserve(decomposed.size());
    for (const QChar c : decomposed) {
        if (c.category() != QChar::Mark_NonSpacing)
            folded.append(c);
    }
    return folded.toCaseFolded();
}

QList<CustomDictionaryEntry> cleanedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries)
{
    QList<CustomDictionaryEntry> cleaned;
    QSet<QString> seenKeys;
    for (const CustomDictionaryEntry &entry : entries) {
        const auto term = normalizedCustomDictionaryText(entry.term);
        if (!term)
            continue;
        const auto replacement = entry.replacement ? normalizedCustomDictionaryText(*entry.replacement) : std::nullopt;
        const QString key = foldedCustomDictionaryKey(*term);
        if (seenKeys.contains(key))
            continue;
        seenKeys.insert(key);
        cleaned.append({*term, replacement});
    }
    return cleaned;
}

QList<CustomDictionaryEntry> updatedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries,
                                                            const CustomDictionaryEntry &adding)
{
    const QString key = foldedCustomDictionaryKey(adding.term);
    QList<CustomDictionaryEntry> updated = cleanedCustomDictionaryEntries(entries);
    updated.removeIf(
        [&key](const CustomDictionaryEntry &entry) { return foldedCustomDictionaryKey(entry.term) == key; });
    updated.append(adding);
    return cleanedCustomDictionaryEntries(updated);
}

std::optional<QString> customDictionaryGuidance(const QList<CustomDictionaryEntry> &entries)
{
    const QList<CustomDictionaryEntry> cleaned = cleanedCustomDictionaryEntries(entries);
    if (cleaned.isEmpty())
        return std::nullopt;
    QStringList exactTerms;
    QStringList rules;
    for (const CustomDictionaryEntry &entry : cleaned) {
        if (entry.replacement)
            rules.append(QStringLiteral("- %1 -> %2").arg(entry.term, *entry.replacement));
        else
            exactTerms.append(QStringLiteral("- ") + entry.term);
    }
    QStringList sections;
    if (!exactTerms.isEmpty())
        sections.append(QStringLiteral("If any of these terms are spoken or clearly intended, the returned transcript "
                                       "must use these exact spellings, capitalization, punctuation, and symbols:\n")
                        + exactTerms.join(QLatin1Char('\n')));
    if (!rules.isEmpty())
        sections.append(QStringLiteral("If any of these spoken forms are heard or clearly intended, the returned "
                                       "transcript must replace them with the exact output shown:\n")
                        + rules.join(QLatin1Char('\n')));
    return sections.join(QStringLiteral("\n\n"));
}
