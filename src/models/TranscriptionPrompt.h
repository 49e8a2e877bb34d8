#pragma once

#include <QString>
#include <optional>

// The prompt sent with a recording: the dictionary guidance wrapped in its
// instructions, or absent when there is no guidance.
inline std::optional<QString> transcriptionPrompt(const std::optional<QString> &dictionaryGuidance)
{
    if (!dictionaryGuidance)
        return std::nullopt;
    return QStringLiteral("You are transcribing spoken audio.\n"
                          "Apply these dictionary rules directly in the transcript you return.\n"
                          "The transcript may include names, email addresses, company names, or product terms.\n")
         + *dictionaryGuidance + QStringLiteral("\nReturn only the transcript text.");
}
