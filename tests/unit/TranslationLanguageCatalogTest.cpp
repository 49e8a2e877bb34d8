#include "services/TranslationLanguageCatalog.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(TranslationLanguageCatalogTest, namesEqualButForCaseAreOrderedByCode)
{
    const auto &all = TranslationLanguageCatalog::all();
    EXPECT_EQ(TranslationLanguageCatalog::sortedForDisplay(all), all);
    EXPECT_EQ(TranslationLanguageCatalog::languagesByCode().size(), all.size()) << "codes are unique";
    EXPECT_EQ(TranslationLanguageCatalog::sortedForDisplay({{"zz", "beta"}, {"yy", "Alpha"}, {"xx", "BETA"}, {"ww", "alpha"}}),
              (QList<TranslationLanguage>{{"ww", "alpha"}, {"yy", "Alpha"}, {"xx", "BETA"}, {"zz", "beta"}}));
}

TEST(TranslationLanguageCatalogTest, storedCodesNormalizeToCatalogCodesOrNothing)
{
    const std::pair<std::optional<QString>, std::optional<QString>> cases[] = {
        {" FR ", "fr"},
        {"de\n", "de"},
        {std::nullopt, std::nullopt},
        {" \t\n", std::nullopt},
        {"deu", std::nullopt},
        {"xx", std::nullopt},
        {"d e", std::nullopt},
    };
    for (const auto &[input, expected] : cases)
        EXPECT_EQ(TranslationLanguageCatalog::normalizedCode(input), expected) << input.value_or("-").toStdString();
}

} // namespace
