#include "FakeInputSourceProvider.h"

#include "services/InputSourceLanguageDetector.h"

#include <gtest/gtest.h>

namespace {

using Detector = InputSourceLanguageDetector;

TEST(InputSourceLanguageDetector, normalizesLanguageTags)
{
    const struct {
        QString tag;
        std::optional<QString> code;
    } cases[] = {
        {QStringLiteral("en-US"), QStringLiteral("en")},
        {QStringLiteral("en_GB"), QStringLiteral("en")},
        {QStringLiteral("zh-Hans"), QStringLiteral("zh")},
        {QStringLiteral(" DE \n"), QStringLiteral("de")},
        {QStringLiteral("deu"), std::nullopt},
        {QStringLiteral("_"), std::nullopt},
        {QStringLiteral("d"), std::nullopt},
        {QStringLiteral("  "), std::nullopt},
        {QStringLiteral("e1"), std::nullopt},
        {QStringLiteral("-en"), std::nullopt},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Detector::normalizedISO639LanguageCode(c.tag), c.code) << c.tag.toStdString();
}

TEST(InputSourceLanguageDetector, normalizesSearchText)
{
    const struct {
        QString text;
        std::optional<QString> words;
    } cases[] = {
        {QStringLiteral("com.apple.keylayout.USInternational-PC"),
         QStringLiteral("com apple keylayout us international pc")},
        {QStringLiteral("xkb:de:nodeadkeys"), QStringLiteral("xkb de nodeadkeys")},
        {QStringLiteral(" German (Switzerland, no dead keys) "), QStringLiteral("german switzerland no dead keys")},
        {QStringLiteral("2-Set Korean"), QStringLiteral("2 set korean")},
        {QStringLiteral("Kotoeri.RomajiTyping"), QStringLiteral("kotoeri romaji typing")},
        {QStringLiteral("Ελληνικά\tΠολυτονικό"), QStringLiteral("ελληνικά πολυτονικό")},
        {QStringLiteral(" .:- "), std::nullopt},
        {QString(), std::nullopt},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Detector::normalizedSearchText(c.text), c.words) << c.text.toStdString();
}

TEST(InputSourceLanguageDetector, hintNamesTheLanguageWithFallbacks)
{
    EXPECT_EQ(Detector::makeLanguageHint(QStringLiteral("de"), QLocale(QLocale::German, QLocale::Germany)),
              (InputLanguageHint{QStringLiteral("de"), QStringLiteral("Deutsch")}));
    EXPECT_EQ(Detector::makeLanguageHint(QStringLiteral("de"), QLocale::c()),
              (InputLanguageHint{QStringLiteral("de"), QStringLiteral("German")}));
    EXPECT_EQ(Detector::makeLanguageHint(QStringLiteral("qq"), QLocale(QLocale::French)),
              (InputLanguageHint{QStringLiteral("qq"), QStringLiteral("QQ")}));
}

TEST(InputSourceLanguageDetector, nameMatchIsWholeWordAndDeterministic)
{
    const QLocale english(QLocale::English);
    const struct {
        QStringList searchTexts;
        std::optional<QString> code;
    } cases[] = {
        {{QStringLiteral("korean english")}, QStringLiteral("en")}, // longest name first
        {{QStringLiteral("tamil hindi")}, QStringLiteral("hi")}, // same length: lower code
        {{QStringLiteral("xkb us"), QStringLiteral("korean")}, QStringLiteral("ko")},
        {{QStringLiteral("russian phonetic")}, QStringLiteral("ru")},
        {{QStringLiteral("usa"), QStringLiteral("germanic")}, std::nullopt}, // no partial words
        {{}, std::nullopt},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Detector::matchedLanguageCode(c.searchTexts, english), c.code)
            << c.searchTexts.join('|').toStdString();
    EXPECT_EQ(Detector::matchedLanguageCode({QStringLiteral("französisch")}, QLocale(QLocale::German)),
              QStringLiteral("fr"));
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
    const QStringList latin{QStringLiteral("en"), QStringLiteral("fr"), QStringLiteral("de-CH"), QStringLiteral("nl")};
    const struct {
        const char *name;
        InputSourceInfo source;
        std::optional<QString> code;
    } cases[] = {
        {"one listed language", {QStringLiteral("xkb:de"), {}, QStringLiteral("Layout"), {QStringLiteral("de")}}, "de"},
        {"the same language twice",
         {QStringLiteral("xkb:x"), {}, {}, {QStringLiteral("de"), QStringLiteral("de_AT")}},
         "de"},
        {"US through the alias", {QStringLiteral("com.apple.keylayout.US"), {}, QStringLiteral("U.S."), latin}, "en"},
        {"international through the alias", {QStringLiteral("keylayout.USInternational-PC"), {}, {}, latin}, "en"},
        {"Japanese input mode",
         {QStringLiteral("com.apple.inputmethod.Kotoeri"),
          QStringLiteral("com.apple.inputmethod.Japanese.Katakana"),
          {},
          {}},
         "ja"},
        {"Linux Japanese engine", {QStringLiteral("ibus:mozc-jp"), {}, QStringLiteral("Mozc"), {}}, "ja"},
        {"Linux Chinese engine", {QStringLiteral("fcitx5:rime"), {}, {}, {QStringLiteral("zz")}}, "zh"},
        {"many languages fall to the name",
         {QStringLiteral("xkb:ch"), {}, QStringLiteral("German (Switzerland)"), latin},
         "de"},
        {"nothing to go by", {QStringLiteral("xkb:custom"), {}, QStringLiteral("Custom"), latin}, std::nullopt},
    };
    for (const auto &c : cases) {
        const auto hint = hintFor(c.source);
        EXPECT_EQ(hint ? std::optional(hint->code) : std::nullopt, c.code) << c.name;
    }

    EXPECT_EQ(hintFor({QStringLiteral("xkb:de"), {}, {}, {QStringLiteral("de")}}),
              (InputLanguageHint{QStringLiteral("de"), QStringLiteral("German")}));
    provider->source.reset();
    EXPECT_EQ(detector.currentLanguageHint(), std::nullopt);
}

} // namespace
