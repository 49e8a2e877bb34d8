#pragma once

#include <QDataStream>
#include <cstdint>

// Lifetime totals of text inserted into other applications.
struct TypingStatistics {
    std::int64_t typedCharacterCount = 0;
    std::int64_t typedWordCount = 0;

    friend bool operator==(const TypingStatistics &, const TypingStatistics &) = default;
    // Carried to the window's process.
    friend QDataStream &operator<<(QDataStream &out, const TypingStatistics &statistics)
    {
        return out << qint64(statistics.typedCharacterCount) << qint64(statistics.typedWordCount);
    }
    friend QDataStream &operator>>(QDataStream &in, TypingStatistics &statistics)
    {
        qint64 characters = 0, words = 0;
        in >> characters >> words;
        statistics = {characters, words};
        return in;
    }
};
