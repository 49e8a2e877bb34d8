#include "views/home/HomeDisplay.h"
#include "views/menu/RecentDictationMenuItem.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace {

struct TimeSavedCase {
    qint64 words;
    const char *expected;
};

// Named in the test list by their input, not by their bytes.
void PrintTo(const TimeSavedCase &c, std::ostream *out)
{
    *out << c.words << " words";
}

class EstimatedTimeSaved : public ::testing::TestWithParam<TimeSavedCase> {};

TEST_P(EstimatedTimeSaved, readsAsTheHomeCardShowsIt)
{
    EXPECT_EQ(HomeDisplay::estimatedTimeSavedText(GetParam().words), QString::fromUtf8(GetParam().expected));
}

// 40 words a minute typed against 130 spoken: 100 words save about 104 s, 1 000 words
// about 17.3 min, 100 000 words about 29 h.
INSTANTIATE_TEST_SUITE_P(Words, EstimatedTimeSaved,
                         ::testing::Values(TimeSavedCase{-5, "0 sec"}, TimeSavedCase{0, "0 sec"},
                                           TimeSavedCase{1, "1 sec"}, TimeSavedCase{20, "21 sec"},
                                           TimeSavedCase{57, "59 sec"}, TimeSavedCase{58, "1m"},
                                           TimeSavedCase{100, "2m"}, TimeSavedCase{1000, "17m"},
                                           TimeSavedCase{5000, "1h 27m"}, TimeSavedCase{100000, "1d 5h"},
                                           TimeSavedCase{83220, "1d"}));

struct TitleCase {
    const char *text;
    const char *expected;
};

void PrintTo(const TitleCase &c, std::ostream *out)
{
    *out << '"';
    for (const char *p = c.text; *p; ++p)
        *out << (*p == '\n' ? "\\n" : *p == '\t' ? "\\t" : std::string(1, *p));
    *out << '"';
}

class MenuTitle : public ::testing::TestWithParam<TitleCase> {};

TEST_P(MenuTitle, isOneShortLine)
{
    EXPECT_EQ(RecentDictationMenuItem::titleText(QString::fromUtf8(GetParam().text)),
              QString::fromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MenuTitle,
    ::testing::Values(
        TitleCase{"123456789012345678901234567890", "123456789012345678901234567890"},
        TitleCase{"1234567890123456789012345678901", "12345678901234567890123456789\u2026"},
        // Whitespace at the cut is trimmed before the ellipsis.
        TitleCase{"1234567890123456789012345678 9012", "1234567890123456789012345678\u2026"},
        TitleCase{"  \n \t\n ", "Untitled dictation"}, TitleCase{"", "Untitled dictation"},
        TitleCase{"Hello\nworld,\t\tagain ", "Hello world, again"},
        // Characters, not UTF-16 units: emoji are never split.
        TitleCase{"😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀",
                  "😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀"},
        TitleCase{"😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀",
                  "😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀\u2026"}));

} // namespace
