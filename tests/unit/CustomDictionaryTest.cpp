#include "ModelFixture.h"

#include "models/CustomDictionary.h"
#include "stores/CustomDictionaryStorage.h"
#include "stores/PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

using Entries = QList<CustomDictionaryEntry>;

CustomDictionaryEntry term(const QString &text)
{
    return {text, std::nullopt};
}
CustomDictionaryEntry rule(const QString &text, const QString &replacement)
{
    return {text, replacement};
}

TEST(CustomDictionaryText, normalizesLinesAndKeepsInnerSpacing)
{
    const struct {
        QString input;
        std::optional<QString> expected;
    } cases[] = {
        {QStringLiteral("  Acme\n\n  Corp  "), QStringLiteral("Acme Corp")},
        {QStringLiteral("a   b"), QStringLiteral("a   b")},
        {QStringLiteral("\n \t"), std::nullopt},
        {QString(), std::nullopt},
        {QStringLiteral("one\r\ntwo\u2028three"), QStringLiteral("one two three")},
        {QStringLiteral("MiXeD\tcase"), QStringLiteral("MiXeD\tcase")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedCustomDictionaryText(c.input), c.expected) << c.input.toStdString();
}

TEST(CustomDictionaryText, foldedKeyIgnoresCaseAndAccentsOnly)
{
    EXPECT_EQ(foldedCustomDictionaryKey(QStringLiteral("Café")), foldedCustomDictionaryKey(QStringLiteral("CAFE")));
    EXPECT_EQ(foldedCustomDictionaryKey(QStringLiteral("İstanbul")),
              foldedCustomDictionaryKey(QStringLiteral("istanbul")));
    EXPECT_NE(foldedCustomDictionaryKey(QStringLiteral("Acme Corp")),
              foldedCustomDictionaryKey(QStringLiteral("AcmeCorp")));
}

TEST(CustomDictionaryText, cleaningDropsBlanksAndLaterDuplicates)
{
    const Entries stored{term(QStringLiteral(" Acme ")), rule(QStringLiteral("open eye"), QStringLiteral(" \n ")),
                         term(QStringLiteral("\t")), term(QStringLiteral("ACME"))};
    EXPECT_EQ(cleanedCustomDictionaryEntries(stored),
              (Entries{term(QStringLiteral("Acme")), term(QStringLiteral("open eye"))}));
}

TEST(CustomDictionaryText, guidanceHasOneSectionPerKindInOrder)
{
    EXPECT_EQ(customDictionaryGuidance({}), std::nullopt);
    EXPECT_EQ(customDictionaryGuidance({term(QStringLiteral(" \n"))}), std::nullopt);
    EXPECT_EQ(customDictionaryGuidance({rule(QStringLiteral("open eye"), QStringLiteral("OpenAI"))}),
              QStringLiteral("If any of these spoken forms are heard or clearly intended, the returned transcript must "
                             "replace them with the exact output shown:\n- open eye -> OpenAI"));
    EXPECT_EQ(
        customDictionaryGuidance({rule(QStringLiteral("open eye"), QStringLiteral("OpenAI")),
                                  term(QStringLiteral("Acme Corp")), term(QStringLiteral("jane@acme.io"))}),
        QStringLiteral("If any of these terms are spoken or clearly intended, the returned transcript must use "
                       "these exact spellings, capitalization, punctuation, and symbols:\n- Acme Corp\n- jane@acme.io"
                       "\n\nIf any of these spoken forms are heard or clearly intended, the returned transcript "
                       "must replace them with the exact output shown:\n- open eye -> OpenAI"));
}

class CustomDictionaryModelTest : public ::testing::Test
{
protected:
    void writePreferences(const QByteArray &json)
    {
        QDir().mkpath(QFileInfo(fixture.preferencesPath()).absolutePath());
        QFile file(fixture.preferencesPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
    }
    [[nodiscard]] Entries storedEntries() const
    {
        return loadedCustomDictionaryEntries(PreferencesStore(fixture.preferencesPath()));
    }

    ModelFixture fixture;
};

TEST_F(CustomDictionaryModelTest, addingUpdatesByCaseOrAccentAndRefusesExactDuplicates)
{
    AppModel &model = fixture.makeModel();
    model.presentError(QStringLiteral("Old error."));
    EXPECT_TRUE(model.addCustomDictionaryEntry(QStringLiteral("  Acme Corp\n"), std::nullopt, false));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("\"Acme Corp\" added to Dictionary."));
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_TRUE(model.addCustomDictionaryEntry(QStringLiteral("cafe"), std::nullopt, false));

    EXPECT_TRUE(model.addCustomDictionaryEntry(QStringLiteral("acme corp"), std::nullopt, false));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("\"acme corp\" updated in Dictionary."));
    EXPECT_TRUE(model.addCustomDictionaryEntry(QStringLiteral("Café"), QStringLiteral("CAFÉ"), true));
    EXPECT_EQ(model.customDictionaryEntries(),
              (Entries{term(QStringLiteral("acme corp")), rule(QStringLiteral("Café"), QStringLiteral("CAFÉ"))}));

    EXPECT_FALSE(model.addCustomDictionaryEntry(QStringLiteral("Café "), QStringLiteral(" CAFÉ"), true));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("\"Café\" is already in Dictionary."));
    // Dropping the replacement is a change, not a duplicate.
    EXPECT_TRUE(model.addCustomDictionaryEntry(QStringLiteral("Café"), std::nullopt, false));
    EXPECT_EQ(model.customDictionaryEntries().last(), term(QStringLiteral("Café")));
    EXPECT_EQ(storedEntries(), model.customDictionaryEntries());
}

TEST_F(CustomDictionaryModelTest, addingRefusesBlankInput)
{
    AppModel &model = fixture.makeModel();
    EXPECT_FALSE(model.addCustomDictionaryEntry(QStringLiteral(" \n\t"), QStringLiteral("x"), true));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Enter a name, email, or company term first."));
    EXPECT_FALSE(model.addCustomDictionaryEntry(QStringLiteral("open eye"), QStringLiteral("  "), true));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Enter a replacement term first."));
    EXPECT_FALSE(model.addCustomDictionaryEntry(QStringLiteral("open eye"), std::nullopt, true));
    EXPECT_TRUE(model.customDictionaryEntries().isEmpty());
    EXPECT_FALSE(PreferencesStore(fixture.preferencesPath()).contains(QStringLiteral("customDictionaryEntries")));
}

TEST_F(CustomDictionaryModelTest, removingAndClearing)
{
    AppModel &model = fixture.makeModel();
    model.addCustomDictionaryEntry(QStringLiteral("Acme"), std::nullopt, false);
    model.addCustomDictionaryEntry(QStringLiteral("open eye"), QStringLiteral("OpenAI"), true);

    model.removeCustomDictionaryEntry(term(QStringLiteral("ACME")));
    EXPECT_EQ(model.statusMessage(), QStringLiteral("\"ACME\" removed from Dictionary."));
    model.clearTranscript(); // resets the status line
    const QString idle = model.statusMessage();
    model.removeCustomDictionaryEntry(term(QStringLiteral("Acme")));
    EXPECT_EQ(model.statusMessage(), idle);
    EXPECT_EQ(storedEntries(), (Entries{rule(QStringLiteral("open eye"), QStringLiteral("OpenAI"))}));

    model.clearCustomDictionary();
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Dictionary cleared."));
    EXPECT_TRUE(storedEntries().isEmpty());
    model.clearCustomDictionary();
    EXPECT_EQ(model.statusMessage(), QStringLiteral("Dictionary is already empty."));
}

TEST_F(CustomDictionaryModelTest, loadingCleansStoredDataAndFallsBackToTerms)
{
    const struct {
        const char *name;
        QByteArray preferences;
        Entries expected;
    } cases[] = {
        {"duplicates by case keep the first",
         R"({"customDictionaryEntries": {"$data": ")"
             + QByteArray(R"([{"term":"Acme"},{"term":"ACME","replacement":"x"},{"term":"b","replacement":" \n"}])")
                   .toBase64()
             + R"("}, "customDictionaryTerms": ["ignored"]})",
         {term(QStringLiteral("Acme")), term(QStringLiteral("b"))}},
        {"an empty list does not consult the terms",
         R"({"customDictionaryEntries": {"$data": ")" + QByteArray("[]").toBase64()
             + R"("}, "customDictionaryTerms": ["ignored"]})",
         {}},
        {"only the old terms",
         R"({"customDictionaryTerms": [" Acme\nCorp ", "", "acme corp", "Zed"]})",
         {term(QStringLiteral("Acme Corp")), term(QStringLiteral("Zed"))}},
        {"undecodable data falls back",
         R"({"customDictionaryEntries": {"$data": ")" + QByteArray(R"([{"term":1}])").toBase64()
             + R"("}, "customDictionaryTerms": ["Zed"]})",
         {term(QStringLiteral("Zed"))}},
        {"data of the wrong type falls back",
         R"({"customDictionaryEntries": "[]", "customDictionaryTerms": ["Zed"]})",
         {term(QStringLiteral("Zed"))}},
    };
    for (const auto &c : cases) {
        writePreferences(c.preferences);
        EXPECT_EQ(fixture.makeModel().customDictionaryEntries(), c.expected) << c.name;
    }
}

TEST_F(CustomDictionaryModelTest, persistingWritesBothKeys)
{
    AppModel &model = fixture.makeModel();
    model.addCustomDictionaryEntry(QStringLiteral("Acme"), std::nullopt, false);
    model.addCustomDictionaryEntry(QStringLiteral("open eye"), QStringLiteral("OpenAI"), true);
    const PreferencesStore stored(fixture.preferencesPath());
    EXPECT_EQ(stored.stringListValue(QStringLiteral("customDictionaryTerms")),
              (QStringList{QStringLiteral("Acme"), QStringLiteral("open eye")}));
    EXPECT_EQ(decodedCustomDictionaryEntries(stored.dataValue(QStringLiteral("customDictionaryEntries")).value()),
              (Entries{term(QStringLiteral("Acme")), rule(QStringLiteral("open eye"), QStringLiteral("OpenAI"))}));
    EXPECT_EQ(fixture.makeModel().customDictionaryEntries(), storedEntries());
}

} // namespace
