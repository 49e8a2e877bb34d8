#include "services/TextReplacement.h"

#include <QString>
#include <gtest/gtest.h>

namespace {

struct RangeCase {
    const char *name;
    QString string;
    TextRange selected;
    bool replaceTriggerSpace;
    std::optional<TextRange> expected;
};

void PrintTo(const RangeCase &c, std::ostream *os) { *os << c.name; }

class ReplacementRangeTest : public ::testing::TestWithParam<RangeCase>
{
};

TEST_P(ReplacementRangeTest, coversTheSelectionAndTheTriggerSpace)
{
    const RangeCase &c = GetParam();
    EXPECT_EQ(replacementRange(c.string, c.selected, c.replaceTriggerSpace), c.expected);
}

const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80"); // outside the BMP: two units

INSTANTIATE_TEST_SUITE_P(
    Table, ReplacementRangeTest,
    ::testing::Values(
        RangeCase{"negativeLocation", "abc", {-1, 0}, true, std::nullopt},
        RangeCase{"negativeLength", "abc", {1, -1}, false, std::nullopt},
        RangeCase{"endBeyondTheValue", "abc", {2, 2}, false, std::nullopt},
        RangeCase{"caretBeyondTheValue", "abc", {4, 0}, true, std::nullopt},
        RangeCase{"noTriggerSpaceWanted", "hello ", {6, 0}, false, TextRange{6, 0}},
        RangeCase{"startOfTheValueTouchesNothingBefore", " hello", {0, 3}, true, TextRange{0, 3}},
        RangeCase{"caretAfterTheTriggerSpace", "hello ", {6, 0}, true, TextRange{5, 1}},
        RangeCase{"selectionAfterASpace", "say hello", {4, 5}, true, TextRange{3, 6}},
        RangeCase{"noSpaceBeforeTheCaret", "hello", {5, 0}, true, TextRange{5, 0}},
        RangeCase{"emptyValue", QString(), {0, 0}, true, TextRange{0, 0}},
        RangeCase{"astralCharactersCountTwice", grin + " ", {3, 0}, true, TextRange{2, 1}},
        RangeCase{"astralBeforeTheCaretIsNoSpace", " " + grin, {3, 0}, true, TextRange{3, 0}},
        RangeCase{"astralSelectionEndsBeyond", grin, {1, 2}, false, std::nullopt}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(TriggerSpaceTest, onlyASpaceJustBeforeTheSelectionCounts)
{
    struct Case {
        QString value;
        TextRange selected;
        bool expected;
    };
    const Case cases[] = {
        {"hello ", {6, 0}, true}, {"hello world", {6, 5}, true}, {"hello", {5, 0}, false},
        {" x", {0, 1}, false},     // location 0 has nothing before it
        {"a ", {3, 0}, false},     // caret past the end
        {"a\t", {2, 0}, false},    // only U+0020
        {grin + " ", {3, 0}, true},
        {" " + grin, {2, 0}, false}, // inside the surrogate pair
    };
    for (const Case &c : cases)
        EXPECT_EQ(hasTriggerSpaceBeforeSelection(c.value, c.selected), c.expected)
            << c.value.toStdString() << " at " << c.selected.location;
}

} // namespace
