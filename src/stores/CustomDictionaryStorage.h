#pragma once

#include "models/CustomDictionaryEntry.h"

#include <QByteArray>
#include <QList>
#include <optional>

class PreferencesStore;

// The custom dictionary as kept in the preferences: "customDictionaryEntries" holds the
// JSON array of {"term", "replacement"?}; "customDictionaryTerms" the plain terms, the
// form older data used and still the fallback.

// The stored list, cleaned; falls back to the plain terms when the JSON is missing or
// does not decode. Used by the model and by the command line, which has no model.
QList<CustomDictionaryEntry> loadedCustomDictionaryEntries(const PreferencesStore &preferences);

// Writes the cleaned list under both keys.
void storeCustomDictionaryEntries(PreferencesStore &preferences, const QList<CustomDictionaryEntry> &entries);

// The JSON form of a list; absent when the bytes are not an array of entries.
QByteArray encodedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries);
std::optional<QList<CustomDictionaryEntry>> decodedCustomDictionaryEntries(const QByteArray &json);
