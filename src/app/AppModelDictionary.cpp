// The custom dictionary.
#include "AppModel.h"

#include "models/CustomDictionary.h"
#include "stores/CustomDictionaryStorage.h"

#include <algorithm>

bool AppModel::addCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                        bool replacementEnabled)
{
    const auto normalizedTerm = normalizedCustomDictionaryText(term);
    if (!normalizedTerm) {
        setStatusMessage(QStringLiteral("Enter a name, email, or company term first."));
        return false;
    }
    const auto normalizedReplacement = replacement ? normalizedCustomDictionaryText(*replacement) : std::nullopt;
    if (replacementEnabled && !normalizedReplacement) {
        setStatusMessage(QStringLiteral("Enter a replacement term first."));
        return false;
    }

    const CustomDictionaryEntry adding{*normalizedTerm, normalizedReplacement};
    const QString key = foldedCustomDictionaryKey(*normalizedTerm);
    const auto existing = std::find_if(
        m_customDictionaryEntries.cbegin(), m_customDictionaryEntries.cend(),
        [&key](const CustomDictionaryEntry &entry) { return foldedCustomDictionaryKey(entry.term) == key; });
    const bool existed = existing != m_customDictionaryEntries.cend();
    if (existed && *existing == adding) {
        setStatusMessage(QStringLiteral("\"%1\" is already in Dictionary.").arg(*normalizedTerm));
        return false;
    }

    setCustomDictionaryEntries(updatedCustomDictionaryEntries(m_customDictionaryEntries, adding));
    persistCustomDictionaryEntries();
    setErrorMessage(std::nullopt);
    setStatusMessage(existed ? QStringLiteral("\"%1\" updated in Dictionary.").arg(*normalizedTerm)
                             : QStringLiteral("\"%1\" added to Dictionary.").arg(*normalizedTerm));
    return true;
}

void AppModel::removeCustomDictionaryEntry(const CustomDictionaryEntry &entry)
{
    const QString key = foldedCustomDictionaryKey(entry.term);
    QList<CustomDictionaryEntry> remaining = cleanedCustomDictionaryEntries(m_customDictionaryEntries);
    remaining.removeIf(
        [&key](const CustomDictionaryEntry &kept) { return foldedCustomDictionaryKey(kept.term) == key; });
    if (remaining == m_customDictionaryEntries)
        return;
    setCustomDictionaryEntries(remaining);
    persistCustomDictionaryEntries();
    setErrorMessage(std::nullopt);
    setStatusMessage(QStringLiteral("\"%1\" removed from Dictionary.").arg(entry.term));
}

void AppModel::clearCustomDictionary()
{
    if (m_customDictionaryEntries.isEmpty()) {
        setStatusMessage(QStringLiteral("Dictionary is already empty."));
        return;
    }
    setCustomDictionaryEntries({});
    persistCustomDictionaryEntries();
    setErrorMessage(std::nullopt);
    setStatusMessage(QStringLiteral("Dictionary cleared."));
}

void AppModel::persistCustomDictionaryEntries()
{
    storeCustomDictionaryEntries(*m_services.preferences, m_customDictionaryEntries);
}

QList<CustomDictionaryEntry> AppModel::loadCustomDictionaryEntries() const
{
    return loadedCustomDictionaryEntries(*m_services.preferences);
}
