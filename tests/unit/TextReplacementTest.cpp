#include "services/TextReplacement.h"

#include <QString>
#include <gtest/gtest.h>

namespace {

const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80"); // outside the BMP: two units

TEST(TextReplacement, rangeCoversTheSelectionAndOnlyASpaceJustBeforeIt)
{
    const struct {
        const char *name;
        QString value;
        TextRange selected;
        bool replaceTriggerSpace;
        std::optional<TextRange> expected;
    } cases[] = {
        {"negative location", "abc", {-1, 0}, true, std::nullopt},
        {"negative length", "abc", {1, -1}, false, std::nullopt},
        {"end beyond the value", "abc", {2, 2}, false, std::nullopt},
        {"caret beyond the value", "a ", {3, 0}, true, std::nullopt},
        {"no trigger space wanted", "hello ", {6, 0}, false, TextRange{6, 0}},
        {"nothing before the start", " hello", {0, 3}, true, TextRange{0, 3}},
        {"selection after a space", "say hello", {4, 5}, true, TextRange{3, 6}},
        {"no space before the caret", "hello", {5, 0}, true, TextRange{5, 0}},
        {"only U+0020", "a\t", {2, 0}, true, TextRange{2, 0}},
        {"empty value", QString(), {0, 0}, true, TextRange{0, 0}},
        {"astral characters count twice", grin + " ", {3, 0}, true, TextRange{2, 1}},
        {"astral before the caret is no space", " " + grin, {3, 0}, true, TextRange{3, 0}},
        {"inside a surrogate pair", " " + grin, {2, 0}, true, TextRange{2, 0}},
        {"astral selection ends beyond", grin, {1, 2}, false, std::nullopt},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(replacementRange(c.value, c.selected, c.replaceTriggerSpace), c.expected) << c.name;
        if (c.replaceTriggerSpace && c.expected) {
            EXPECT_EQ(hasTriggerSpaceBeforeSelection(c.value, c.selected), c.expected->location < c.selected.location)
                << c.name;
        }
    }
}

} // namespace
