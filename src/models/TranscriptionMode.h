#pragma once

#include <QString>
#include <array>

// Which transcription model a dictation asks for, and whether the speech is streamed
// as it is recorded (live) or uploaded after it. The raw values are persisted.
enum class TranscriptionMode { fast,
                               moreAccurate,
                               live };

inline constexpr std::array allTranscriptionModes{TranscriptionMode::fast,
                                                  TranscriptionMode::moreAccurate,
                                                  TranscriptionMode::live};

inline QString rawValue(TranscriptionMode mode)
{
    switch (mode) {
    case TranscriptionMode::moreAccurate:
        return QStringLiteral("moreAccurate");
    case TranscriptionMode::live:
        return QStringLiteral("live");
    case TranscriptionMode::fast:
        break;
    }
    return QStringLiteral("fast");
}

// Exactly "moreAccurate" or "live" select those modes; anything else (other case
// included) is fast.
inline TranscriptionMode transcriptionModeFromRawValue(const QString &raw)
{
    for (const TranscriptionMode mode : allTranscriptionModes) {
        if (raw == rawValue(mode))
            return mode;
    }
    return TranscriptionMode::fast;
}

// Live takes the fast model: its latency is hidden while the user speaks, and the
// upload it falls back to should cost what Fast costs.
inline QString transcriptionModelName(TranscriptionMode mode)
{
    return mode == TranscriptionMode::moreAccurate ? QStringLiteral("gpt-4o-transcribe")
                                                   : QStringLiteral("gpt-4o-mini-transcribe");
}
