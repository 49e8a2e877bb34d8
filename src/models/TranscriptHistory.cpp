#include "TranscriptHistory.h"

#include <QUuid>

QList<TranscriptEntry> updatedTranscriptHistory(const QList<TranscriptEntry> &history, const QString &text,
                                                const QDateTime &now)
{
    if (text.trimmed().isEmpty())
        return history;
    QList<TranscriptEntry> updated{{QUuid::createUuid(), text, now}};
    updated.append(history.first(std::min<qsizetype>(history.size(), maxRecentTranscripts - 1)));
    return updated;
}

TypingStatistics updatedTypingStatistics(const TypingStatistics &statistics, const QString &insertedTranscript)
{
    Q_UNUSED(insertedTranscript)
    return statistics;
}
