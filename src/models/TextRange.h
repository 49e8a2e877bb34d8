#pragma once

#include <QtGlobal>

// A stretch of text in UTF-16 units, as QString counts them.
struct TextRange {
    qsizetype location = 0;
    qsizetype length = 0;

    friend bool operator==(const TextRange &, const TextRange &) = default;
};
