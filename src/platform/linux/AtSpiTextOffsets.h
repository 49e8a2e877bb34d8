#pragma once

// AT-SPI counts characters (code points); Quorla counts UTF-16 units. Offsets past the
// end stay past the end, so range checks downstream still see them as out of range.

#include <QStringView>

// The UTF-16 offset of the code point at `codePoints` in `text`.
[[nodiscard]] inline qsizetype utf16OffsetOfCodePoint(QStringView text, qsizetype codePoints)
{
    qsizetype units = 0;
    for (qsizetype i = 0; i < codePoints; ++i) {
        if (units >= text.size())
            return text.size() + (codePoints - i);
        const bool pair = text.at(units).isHighSurrogate() && units + 1 < text.size()
                       && text.at(units + 1).isLowSurrogate();
        units += pair ? 2 : 1;
    }
    return units;
}

// The code point offset of the UTF-16 offset `units` in `text`; inside a surrogate pair it
// rounds down to the pair's start.
[[nodiscard]] inline qsizetype codePointOffsetOfUtf16(QStringView text, qsizetype units)
{
    if (units > text.size())
        return codePointOffsetOfUtf16(text, text.size()) + (units - text.size());
    qsizetype codePoints = 0;
    qsizetype i = 0;
    while (i < units) {
        const bool pair = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (pair && i + 1 == units)
            break;
        i += pair ? 2 : 1;
        ++codePoints;
    }
    return codePoints;
}
