#include "TranscriptHistory.h"

#include <QTextBoundaryFinder>
#include <QUuid>
#include <stdexcept>

QList<TranscriptEntry> updatedTranscriptHistory(const QList<TranscriptEntry> &history, const QString &text,
                                                const QDateTime &now)
{
    if (text.trimmed().isEmpty())
        return history;
    QList<TranscriptEntry> updated{{QUuid::createUuid(), text, now}};
    updated.append(history.first(std::min<qsizetype>(history.size(), maxRecentTranscripts - 1)));
    return updated;
}

namespace {

// User-perceived characters: an emoji sequence or a letter with its accents is one.
std::int64_t graphemeClusterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    std::int64_t count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

std::int64_t wordCount(const QString &text)
{
    std::int64_t count = 0;
    bool inWord = false;
    for (const QChar c : text) {
        const bool space = c.isSpace();
        if (!space && !inWord)
            ++count;
        inWord = !space;
    }
    return count;
}

std::int64_t checkedSum(std::int64_t total, std::int64_t added)
{
    std::int64_t sum = 0;
    if (__builtin_add_overflow(total, added, &sum))
        throw std::overflow_error("typing statistics overflow");
    return sum;
}

} // namespace

TypingStatistics updatedTypingStatistics(const TypingStatistics &statistics, const QString &insertedTranscript)
{
    if (insertedTranscript.trimmed().isEmpty())
        return statistics;
    return {checkedSum(statistics.typedCharacterCount, graphemeClusterCount(insertedTranscript)),
            checkedSum(statistics.typedWordCount, wordCount(insertedTranscript))};
}
