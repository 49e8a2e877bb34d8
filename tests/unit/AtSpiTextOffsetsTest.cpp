#include "platform/linux/AtSpiTextOffsets.h"

#include <QString>
#include <gtest/gtest.h>

namespace {

const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80"); // two UTF-16 units, one code point

TEST(AtSpiTextOffsetsTest, codePointsAndUtf16UnitsConvertBothWays)
{
    struct Case {
        QString text;
        qsizetype codePoints;
        qsizetype units;
    };
    const QString mixed = "a" + grin + "b" + grin;
    const Case cases[] = {
        {QString(), 0, 0}, {"abc", 2, 2}, {mixed, 0, 0}, {mixed, 1, 1}, {mixed, 2, 3}, {mixed, 3, 4},
        {mixed, 4, 6},
        {mixed, 6, 8},            // past the end stays past the end
        {"ab", 5, 5},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(utf16OffsetOfCodePoint(c.text, c.codePoints), c.units) << c.codePoints;
        EXPECT_EQ(codePointOffsetOfUtf16(c.text, c.units), c.codePoints) << c.units;
    }
}

TEST(AtSpiTextOffsetsTest, anOffsetInsideASurrogatePairRoundsDown)
{
    EXPECT_EQ(codePointOffsetOfUtf16("a" + grin, 2), 1);
    // A lone high surrogate counts as one character, as it would on the wire.
    const QString lone = QString(QChar(0xD83D)) + "x";
    EXPECT_EQ(utf16OffsetOfCodePoint(lone, 1), 1);
    EXPECT_EQ(codePointOffsetOfUtf16(lone, 2), 2);
}

} // namespace
