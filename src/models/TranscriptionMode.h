#pragma once

#include <QString>
#include <array>

// Which transcription model a dictation asks for. The raw values are persisted.
enum class TranscriptionMode { fast,
                               moreAccurate };

inline constexpr std::array allTranscriptionModes{TranscriptionMode::fast,
                                                  TranscriptionMode::moreAccurate};

inline QString rawValue(TranscriptionMode mode)
{
    return mode == TranscriptionMode::moreAccurate ? QStringLiteral("moreAccurate")
                                                   : QStringLiteral("fast");
}

// Exactly "moreAccurate" selects moreAccurate; anything else (other case included) is fast.
inline TranscriptionMode transcriptionModeFromRawValue(const QString &raw)
{
    return raw == QLatin1String("moreAccurate") ? TranscriptionMode::moreAccurate
                                                : TranscriptionMode::fast;
}

inline QString transcriptionModelName(TranscriptionMode mode)
{
    return mode == TranscriptionMode::moreAccurate ? QStringLiteral("gpt-4o-transcribe")
                                                   : QStringLiteral("gpt-4o-mini-transcribe");
}
