#include "QtPrinters.h"

#include "views/home/HomeDisplay.h"
#include "views/menu/RecentDictationMenuItem.h"

#include <gtest/gtest.h>

namespace {

// 40 words a minute typed against 130 spoken: 100 words save about 104 s, 1 000 words
// about 17.3 min, 100 000 words about 29 h.
TEST(EstimatedTimeSaved, readsAsTheHomeCardShowsIt)
{
    for (const auto &[words, expected] : std::initializer_list<std::pair<qint64, QString>>{
             {-5, "0 sec"}, {20, "21 sec"}, {57, "59 sec"}, {58, "1m"}, {1000, "17m"}, {5000, "1h 27m"}, {100000, "1d 5h"}, {83220, "1d"}})
        EXPECT_EQ(HomeDisplay::estimatedTimeSavedText(words), expected) << words << " words";
}

TEST(MenuTitle, isOneShortLine)
{
    const QString emoji = QString::fromUtf8("😀");
    for (const auto &[text, expected] : std::initializer_list<std::pair<QString, QString>>{
             {"123456789012345678901234567890", "123456789012345678901234567890"},
             {"1234567890123456789012345678901", "12345678901234567890123456789\u2026"},
             // Whitespace at the cut is trimmed before the ellipsis.
             {"1234567890123456789012345678 9012", "1234567890123456789012345678\u2026"},
             {"  \n \t\n ", "Untitled dictation"},
             {"Hello\nworld,\t\tagain ", "Hello world, again"},
             // Characters, not UTF-16 units: emoji are never split.
             {emoji.repeated(30), emoji.repeated(30)},
             {emoji.repeated(31), emoji.repeated(29) + u'\u2026'}})
        EXPECT_EQ(RecentDictationMenuItem::titleText(text), expected);
}

} // namespace
