#pragma once

#include "models/CustomDictionaryEntry.h"

#include <QList>
#include <QString>
#include <optional>

// Pure helpers of the custom dictionary.

// Lines folded into one, trimmed; absent when nothing is left.
std::optional<QString> normalizedCustomDictionaryText(const QString &text);

// The entry's identity: its term folded case- and diacritic-insensitively.
QString foldedCustomDictionaryKey(const QString &term);

// Normalized entries, first occurrence of each folded key kept.
QList<CustomDictionaryEntry> cleanedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries);

// The list after adding or replacing one entry (moved to the end).
QList<CustomDictionaryEntry> updatedCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries,
                                                            const CustomDictionaryEntry &adding);

// The prompt block for transcription and polish; absent for an empty dictionary.
std::optional<QString> customDictionaryGuidance(const QList<CustomDictionaryEntry> &entries);
