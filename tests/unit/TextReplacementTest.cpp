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
        RangeCase{"negativeLocation", QStringLiteral("abc"), {-1, 0}, true, std::nullopt},
        RangeCase{"negativeLength", QStringLiteral("abc"), {1, -1}, false, std::nullopt},
        RangeCase{"endBeyondTheValue", QStringLiteral("abc"), {2, 2}, false, std::nullopt},
        RangeCase{"caretBeyondTheValue", QStringLiteral("abc"), {4, 0}, true, std::nullopt},
        RangeCase{"noTriggerSpaceWanted", QStringLiteral("hello "), {6, 0}, false, TextRange{6, 0}},
        RangeCase{"startOfTheValueTouchesNothingBefore", QStringLiteral(" hello"), {0, 3}, true, TextRange{0, 3}},
        RangeCase{"caretAfterTheTriggerSpace", QStringLiteral("hello "), {6, 0}, true, TextRange{5, 1}},
        RangeCase{"selectionAfterASpace", QStringLiteral("say hello"), {4, 5}, true, TextRange{3, 6}},
        RangeCase{"noSpaceBeforeTheCaret", QStringLiteral("hello"), {5, 0}, true, TextRange{5, 0}},
        RangeCase{"emptyValue", QString(), {0, 0}, true, TextRange{0, 0}},
        RangeCase{"astralCharactersCountTwice", grin + QStringLiteral(" "), {3, 0}, true, TextRange{2, 1}},
        RangeCase{"astralBeforeTheCaretIsNoSpace", QStringLiteral(" ") + grin, {3, 0}, true, TextRange{3, 0}},
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
        {QStringLiteral("hello "), {6, 0}, true},
        {QStringLiteral("hello world"), {6, 5}, true},
        {QStringLiteral("hello"), {5, 0}, false},
        {QStringLiteral(" x"), {0, 1}, false},     // location 0 has nothing before it
        {QStringLiteral("a "), {3, 0}, false},     // caret past the end
        {QStringLiteral("a\t"), {2, 0}, false},    // only U+0020
        {grin + QStringLiteral(" "), {3, 0}, true},
        {QStringLiteral(" ") + grin, {2, 0}, false}, // inside the surrogate pair
    };
    for (const Case &c : cases)
        EXPECT_EQ(hasTriggerSpaceBeforeSelection(c.value, c.selected), c.expected)
            << c.value.toStdString() << " at " << c.selected.location;
}

} // namespace
