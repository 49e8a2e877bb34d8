#pragma once

#include <QString>

// The names of every preference Quorla keeps. One list, so that the window, the
// command line and the platform backends read and write the same keys.
namespace PreferenceKeys {

inline const QString shouldPolishTranscript = QStringLiteral("shouldPolishTranscript");
inline const QString polishPrompt = QStringLiteral("polishPrompt");
inline const QString transcriptionMode = QStringLiteral("transcriptionMode");
inline const QString translationLanguageCode = QStringLiteral("translationLanguageCode");
inline const QString autoCopyTranscript = QStringLiteral("autoCopyTranscript");
inline const QString showMenuBarIcon = QStringLiteral("showMenuBarIcon");
inline const QString startListeningOnTriggerDown = QStringLiteral("startListeningOnTriggerDown");
inline const QString typedCharacterCount = QStringLiteral("typedCharacterCount");
inline const QString typedWordCount = QStringLiteral("typedWordCount");
inline const QString hasStoredAPIKey = QStringLiteral("hasStoredAPIKey");
inline const QString customDictionaryEntries = QStringLiteral("customDictionaryEntries");
// The plain terms, the form older data used and still the fallback.
inline const QString customDictionaryTerms = QStringLiteral("customDictionaryTerms");
inline const QString triggerKey = QStringLiteral("triggerKey");
inline const QString apiBaseURL = QStringLiteral("apiBaseURL");
inline const QString latestReleaseURL = QStringLiteral("latestReleaseURL");

} // namespace PreferenceKeys
