#pragma once

#include "models/TranscriptEntry.h"
#include "models/TypingStatistics.h"

#include <QDateTime>
#include <QList>
#include <QString>

// Pure helpers of the transcript history and the typing statistics.

inline constexpr int maxRecentTranscripts = 5;

// The history with a non-blank text added in front, capped at five entries.
QList<TranscriptEntry> updatedTranscriptHistory(const QList<TranscriptEntry> &history, const QString &text,
                                                const QDateTime &now);

// The statistics with an inserted text counted in user-perceived characters and
// whitespace-separated words; blank text changes nothing.
TypingStatistics updatedTypingStatistics(const TypingStatistics &statistics, const QString &insertedTranscript);
