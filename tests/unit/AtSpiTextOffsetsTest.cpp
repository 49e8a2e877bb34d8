#include "platform/linux/AtSpiTextOffsets.h"

#include <QString>
#include <gtest/gtest.h>

namespace {

TEST(AtSpiTextOffsetsTest, codePointsAndUtf16UnitsConvertBothWays)
{
    const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80"); // two UTF-16 units, one code point
    const QString mixed = "a" + grin + "b" + grin;
    const std::tuple<QString, qsizetype, qsizetype> cases[] = {
        // past the end stays past the end
        {"abc", 2, 2},
        {mixed, 1, 1},
        {mixed, 2, 3},
        {mixed, 3, 4},
        {mixed, 4, 6},
        {mixed, 6, 8},
        {"ab", 5, 5},
    };
    for (const auto &[text, codePoints, units] : cases) {
        EXPECT_EQ(utf16OffsetOfCodePoint(text, codePoints), units) << codePoints;
        EXPECT_EQ(codePointOffsetOfUtf16(text, units), codePoints) << units;
    }
    EXPECT_EQ(codePointOffsetOfUtf16("a" + grin, 2), 1); // inside a surrogate pair rounds down
    // A lone high surrogate counts as one character, as it would on the wire.
    EXPECT_EQ(utf16OffsetOfCodePoint(QString(QChar(0xD83D)) + "x", 1), 1);
}

} // namespace
