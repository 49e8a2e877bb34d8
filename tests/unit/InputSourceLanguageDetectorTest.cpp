#include "FakeInputSourceProvider.h"

#include "services/InputSourceLanguageDetector.h"

#include <gtest/gtest.h>

namespace {

using Detector = InputSourceLanguageDetector;

TEST(InputSourceLanguageDetector, namesMatchAsWholeWordsLongestFirstAndHintsFallBack)
{
    const QLocale english(QLocale::English);
    const std::pair<QStringList, std::optional<QString>> cases[] = {
        {{"korean english"}, "en"}, {{"tamil hindi"}, "hi"}, // same length: lower code
        {{"xkb us", "korean"}, "ko"},
        {{"usa", "germanic"}, std::nullopt}, // no partial words
    };
    for (const auto &[texts, code] : cases)
        EXPECT_EQ(Detector::matchedLanguageCode(texts, english), code) << texts.join('|').toStdString();
    EXPECT_EQ(Detector::matchedLanguageCode({"französisch"}, QLocale(QLocale::German)), "fr");
    EXPECT_EQ(Detector::makeLanguageHint("de", QLocale(QLocale::German)), (InputLanguageHint{"de", "Deutsch"}));
    EXPECT_EQ(Detector::makeLanguageHint("qq", QLocale(QLocale::French)), (InputLanguageHint{"qq", "QQ"}));
}

TEST(InputSourceLanguageDetector, derivesTheLanguageOfTheSelectedSource)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    auto provider = std::make_shared<FakeInputSourceProvider>();
    Detector detector{provider};
    const QStringList latin{"en", "fr", "de-CH", "nl"};
    const std::pair<InputSourceInfo, std::optional<QString>> cases[] = {
        {{"xkb:x", {}, {}, {"de", "de_AT"}}, "de"}, // the same language twice
        {{"com.apple.keylayout.US", {}, "U.S.", latin}, "en"},
        {{"keylayout.USInternational-PC", {}, {}, latin}, "en"},
        {{"com.apple.inputmethod.Kotoeri", "com.apple.inputmethod.Japanese.Katakana", {}, {}}, "ja"},
        {{"ibus:mozc-jp", {}, "Mozc", {}}, "ja"},
        {{"fcitx5:rime", {}, {}, {"zz"}}, "zh"},
        {{"xkb:ch", {}, "German (Switzerland)", latin}, "de"}, // many languages fall to the name
        {{"xkb:custom", {}, "Custom", latin}, std::nullopt},
    };
    for (const auto &[source, code] : cases) {
        provider->source = source;
        const auto hint = detector.currentLanguageHint();
        EXPECT_EQ(hint ? std::optional(hint->code) : std::nullopt, code) << source.identifier.toStdString();
    }
    provider->source.reset();
    EXPECT_EQ(detector.currentLanguageHint(), std::nullopt);
    QLocale::setDefault(QLocale::system());
}

} // namespace
