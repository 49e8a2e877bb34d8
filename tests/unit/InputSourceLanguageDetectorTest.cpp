#include "FakeInputSourceProvider.h"

#include "services/InputSourceLanguageDetector.h"

#include <gtest/gtest.h>

namespace {

using Detector = InputSourceLanguageDetector;

TEST(InputSourceLanguageDetector, hintNamesTheLanguageWithFallbacks)
{
    EXPECT_EQ(Detector::makeLanguageHint("de", QLocale(QLocale::German, QLocale::Germany)),
              (InputLanguageHint{"de", "Deutsch"}));
    EXPECT_EQ(Detector::makeLanguageHint("de", QLocale::c()),
              (InputLanguageHint{"de", "German"}));
    EXPECT_EQ(Detector::makeLanguageHint("qq", QLocale(QLocale::French)),
              (InputLanguageHint{"qq", "QQ"}));
}

TEST(InputSourceLanguageDetector, nameMatchIsWholeWordAndDeterministic)
{
    const QLocale english(QLocale::English);
    const struct {
        QStringList searchTexts;
        std::optional<QString> code;
    } cases[] = {
        {{"korean english"}, "en"}, // longest name first
        {{"tamil hindi"}, "hi"}, // same length: lower code
        {{"xkb us", "korean"}, "ko"}, {{"russian phonetic"}, "ru"},
        {{"usa", "germanic"}, std::nullopt}, // no partial words
        {{}, std::nullopt},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Detector::matchedLanguageCode(c.searchTexts, english), c.code)
            << c.searchTexts.join('|').toStdString();
    EXPECT_EQ(Detector::matchedLanguageCode({"französisch"}, QLocale(QLocale::German)),
              "fr");
}

class DetectorWithSource : public ::testing::Test
{
protected:
    DetectorWithSource() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    ~DetectorWithSource() override { QLocale::setDefault(QLocale::system()); }

    std::optional<InputLanguageHint> hintFor(const InputSourceInfo &source)
    {
        provider->source = source;
        return detector.currentLanguageHint();
    }

    std::shared_ptr<FakeInputSourceProvider> provider = std::make_shared<FakeInputSourceProvider>();
    Detector detector{provider};
};

TEST_F(DetectorWithSource, derivesTheLanguageOfTheSelectedSource)
{
    const QStringList latin{"en", "fr", "de-CH", "nl"};
    const struct {
        const char *name;
        InputSourceInfo source;
        std::optional<QString> code;
    } cases[] = {
        {"one listed language", {"xkb:de", {}, "Layout", {"de"}}, "de"},
        {"the same language twice", {"xkb:x", {}, {}, {"de", "de_AT"}}, "de"},
        {"US through the alias", {"com.apple.keylayout.US", {}, "U.S.", latin}, "en"},
        {"international through the alias", {"keylayout.USInternational-PC", {}, {}, latin}, "en"},
        {"Japanese input mode", {"com.apple.inputmethod.Kotoeri", "com.apple.inputmethod.Japanese.Katakana", {}, {}},
         "ja"},
        {"Linux Japanese engine", {"ibus:mozc-jp", {}, "Mozc", {}}, "ja"},
        {"Linux Chinese engine", {"fcitx5:rime", {}, {}, {"zz"}}, "zh"},
        {"many languages fall to the name", {"xkb:ch", {}, "German (Switzerland)", latin}, "de"},
        {"nothing to go by", {"xkb:custom", {}, "Custom", latin}, std::nullopt},
    };
    for (const auto &c : cases) {
        const auto hint = hintFor(c.source);
        EXPECT_EQ(hint ? std::optional(hint->code) : std::nullopt, c.code) << c.name;
    }

    EXPECT_EQ(hintFor({"xkb:de", {}, {}, {"de"}}),
              (InputLanguageHint{"de", "German"}));
    provider->source.reset();
    EXPECT_EQ(detector.currentLanguageHint(), std::nullopt);
}

} // namespace
