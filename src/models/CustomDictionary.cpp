#include "CustomDictionary.h"

std::optional<QString> normalizedCustomDictionaryText(const QString &text)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? std::nullopt : std::optional(trimmed);
}

QString foldedCustomDictionaryKey(const QString &term)
{
    return term.toCaseFolded();
}

QList<CustomDictionaryEntry> cleanedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries)
{
    return entries;
}

QList<CustomDictionaryEntry> updatedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries,
                                                            const CustomDictionaryEntry &adding)
{
    QList<CustomDictionaryEntry> result = entries;
    result.append(adding);
    return result;
}

std::optional<QString> customDictionaryGuidance(const QList<CustomDictionaryEntry> &entries)
{
    Q_UNUSED(entries)
    return std::nullopt;
}
