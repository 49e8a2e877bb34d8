#include "CustomDictionaryStorage.h"

#include "models/CustomDictionary.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace {
const QString &entriesKey = PreferenceKeys::customDictionaryEntries;
const QString &termsKey = PreferenceKeys::customDictionaryTerms;
const QString termField = QStringLiteral("term");
const QString replacementField = QStringLiteral("replacement");
} // namespace

QByteArray encodedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries)
{
    QJsonArray array;
    for (const CustomDictionaryEntry &entry : entries) {
        QJsonObject object{{termField, entry.term}};
        if (entry.replacement)
            object.insert(replacementField, *entry.replacement);
        array.append(object);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<CustomDictionaryEntry>> decodedCustomDictionaryEntries(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    // One malformed element makes the whole list unreadable, as a strict decoder would.
    QList<CustomDictionaryEntry> entries;
    for (const QJsonValue element : document.array()) {
        if (!element.isObject())
            return std::nullopt;
        const QJsonObject object = element.toObject();
        const QJsonValue term = object.value(termField);
        const QJsonValue replacement = object.value(replacementField);
        if (!term.isString() || !(replacement.isUndefined() || replacement.isNull() || replacement.isString()))
            return std::nullopt;
        entries.append(
            {term.toString(), replacement.isString() ? std::optional(replacement.toString()) : std::nullopt});
    }
    return entries;
}

QList<CustomDictionaryEntry> loadedCustomDictionaryEntries(const PreferencesStore &preferences)
{
    if (const auto data = preferences.dataValue(entriesKey)) {
        if (const auto entries = decodedCustomDictionaryEntries(*data))
            return cleanedCustomDictionaryEntries(*entries);
    }
    QList<CustomDictionaryEntry> entries;
    for (const QString &term : preferences.stringListValue(termsKey).value_or(QStringList())) {
        if (const auto normalized = normalizedCustomDictionaryText(term))
            entries.append({*normalized, std::nullopt});
    }
    return cleanedCustomDictionaryEntries(entries);
}

void storeCustomDictionaryEntries(PreferencesStore &preferences, const QList<CustomDictionaryEntry> &entries)
{
    const QList<CustomDictionaryEntry> cleaned = cleanedCustomDictionaryEntries(entries);
    preferences.setData(entriesKey, encodedCustomDictionaryEntries(cleaned));
    QStringList terms;
    for (const CustomDictionaryEntry &entry : cleaned)
        terms.append(entry.term);
    preferences.setStringList(termsKey, terms);
}
