#include "services/TranslationLanguageCatalog.h"

#include <QRegularExpression>
#include <QSet>
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(TranslationLanguageCatalogTest, everyEntryIsATwoLetterCodeWithAName)
{
    const auto &all = TranslationLanguageCatalog::all();
    ASSERT_GT(all.size(), 100);
    static const QRegularExpression twoLetters("^[a-z]{2}$");
    QSet<QString> codes;
    for (const TranslationLanguage &language : all) {
        EXPECT_TRUE(twoLetters.match(language.code).hasMatch()) << language.code.toStdString();
        EXPECT_FALSE(language.displayName.isEmpty());
        EXPECT_EQ(language.displayName, language.displayName.trimmed());
        codes.insert(language.code);
    }
    EXPECT_EQ(codes.size(), all.size());
    EXPECT_EQ(TranslationLanguageCatalog::languagesByCode().size(), all.size());
    EXPECT_EQ(TranslationLanguageCatalog::languagesByCode().value("de").displayName, "German");
    EXPECT_EQ(TranslationLanguageCatalog::sortedForDisplay(all), all);
}

TEST(TranslationLanguageCatalogTest, namesEqualButForCaseAreOrderedByCode)
{
    const QList<TranslationLanguage> sorted = TranslationLanguageCatalog::sortedForDisplay(
        {{"zz", "beta"}, {"yy", "Alpha"}, {"xx", "BETA"}, {"ww", "alpha"}});
    const QList<TranslationLanguage> expected{{"ww", "alpha"}, {"yy", "Alpha"}, {"xx", "BETA"}, {"zz", "beta"}};
    EXPECT_EQ(sorted, expected);
}

TEST(TranslationLanguageCatalogTest, storedCodesNormalizeToCatalogCodesOrNothing)
{
    const QList<std::pair<std::optional<QString>, std::optional<QString>>> cases{
        {" FR ", "fr"}, {"de\n", "de"},
        {std::nullopt, std::nullopt},                   {QString(), std::nullopt},
        {" \t\n", std::nullopt},        {"deu", std::nullopt},
        {"xx", std::nullopt},           {"d e", std::nullopt},
    };
    for (const auto &[input, expected] : cases)
        EXPECT_EQ(TranslationLanguageCatalog::normalizedCode(input), expected) << input.value_or("(absent)").toStdString();
}

} // namespace
