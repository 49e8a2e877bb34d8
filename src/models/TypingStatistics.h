#pragma once

#include <cstdint>

// Lifetime totals of text inserted into other applications.
struct TypingStatistics {
    std::int64_t typedCharacterCount = 0;
    std::int64_t typedWordCount = 0;

    friend bool operator==(const TypingStatistics &, const TypingStatistics &) = default;
};
