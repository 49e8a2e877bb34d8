#include "ModelTest.h"

#include "models/CustomDictionary.h"
#include "models/TranscriptionPrompt.h"
#include "stores/CustomDictionaryStorage.h"

namespace {

using Entries = QList<CustomDictionaryEntry>;

CustomDictionaryEntry term(const QString &text) { return {text, std::nullopt}; }
CustomDictionaryEntry rule(const QString &text, const QString &replacement) { return {text, replacement}; }

TEST(CustomDictionaryText, normalizesLinesAndKeepsInnerSpacing)
{
    const struct {
        QString input;
        std::optional<QString> expected;
    } cases[] = {
        {"  Acme\n\n  Corp  ", "Acme Corp"}, {"a   b", "a   b"}, {"\n \t", std::nullopt},
        {QString(), std::nullopt}, {"one\r\ntwo\u2028three", "one two three"}, {"MiXeD\tcase", "MiXeD\tcase"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedCustomDictionaryText(c.input), c.expected) << c.input.toStdString();
}

TEST(CustomDictionaryText, foldedKeyIgnoresCaseAndAccentsOnly)
{
    EXPECT_EQ(foldedCustomDictionaryKey("Café"), foldedCustomDictionaryKey("CAFE"));
    EXPECT_EQ(foldedCustomDictionaryKey("İstanbul"), foldedCustomDictionaryKey("istanbul"));
    EXPECT_NE(foldedCustomDictionaryKey("Acme Corp"), foldedCustomDictionaryKey("AcmeCorp"));
}

TEST(CustomDictionaryText, cleaningDropsBlanksAndLaterDuplicates)
{
    const Entries stored{term(" Acme "), rule("open eye", " \n "), term("\t"), term("ACME")};
    EXPECT_EQ(cleanedCustomDictionaryEntries(stored), (Entries{term("Acme"), term("open eye")}));
}

// What the transcription request carries for a dictionary, word for word.
TEST(CustomDictionaryText, theTranscriptionPromptWrapsTheGuidance)
{
    const QString head = "You are transcribing spoken audio.\nApply these dictionary rules directly in the transcript "
                         "you return.\nThe transcript may include names, email addresses, company names, or product "
                         "terms.\n";
    const QString terms = "If any of these terms are spoken or clearly intended, the returned transcript must use "
                          "these exact spellings, capitalization, punctuation, and symbols:\n";
    const QString rules = "If any of these spoken forms are heard or clearly intended, the returned transcript must "
                          "replace them with the exact output shown:\n";
    const QString tail = "\nReturn only the transcript text.";
    const struct {
        Entries entries;
        std::optional<QString> prompt;
    } cases[] = {
        {{}, std::nullopt},
        {{term(" \n")}, std::nullopt},
        {{rule("open eye", "OpenAI")}, head + rules + "- open eye -> OpenAI" + tail},
        {{rule("open eye", "OpenAI"), term("Acme Corp"), term("jane@acme.io")},
         head + terms + "- Acme Corp\n- jane@acme.io\n\n" + rules + "- open eye -> OpenAI" + tail},
    };
    for (const auto &c : cases)
        EXPECT_EQ(transcriptionPrompt(customDictionaryGuidance(c.entries)), c.prompt) << c.entries.size();
}

class CustomDictionaryModelTest : public ModelTest
{
protected:
    [[nodiscard]] Entries storedEntries() const { return loadedCustomDictionaryEntries(stored()); }
};

TEST_F(CustomDictionaryModelTest, addingUpdatesByCaseOrAccentAndRefusesDuplicatesAndBlanks)
{
    AppModel &model = fixture.makeModel();
    model.presentError("Old error.");
    EXPECT_TRUE(model.addCustomDictionaryEntry("  Acme Corp\n", std::nullopt, false));
    EXPECT_EQ(model.statusMessage(), "\"Acme Corp\" added to Dictionary.");
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_TRUE(model.addCustomDictionaryEntry("cafe", std::nullopt, false));

    EXPECT_TRUE(model.addCustomDictionaryEntry("acme corp", std::nullopt, false));
    EXPECT_EQ(model.statusMessage(), "\"acme corp\" updated in Dictionary.");
    EXPECT_TRUE(model.addCustomDictionaryEntry("Café", "CAFÉ", true));
    EXPECT_EQ(model.customDictionaryEntries(), (Entries{term("acme corp"), rule("Café", "CAFÉ")}));

    EXPECT_FALSE(model.addCustomDictionaryEntry("Café ", " CAFÉ", true));
    EXPECT_EQ(model.statusMessage(), "\"Café\" is already in Dictionary.");
    // Dropping the replacement is a change, not a duplicate.
    EXPECT_TRUE(model.addCustomDictionaryEntry("Café", std::nullopt, false));
    EXPECT_EQ(model.customDictionaryEntries().last(), term("Café"));
    EXPECT_EQ(storedEntries(), model.customDictionaryEntries());

    EXPECT_FALSE(model.addCustomDictionaryEntry(" \n\t", "x", true));
    EXPECT_EQ(model.statusMessage(), "Enter a name, email, or company term first.");
    EXPECT_FALSE(model.addCustomDictionaryEntry("open eye", "  ", true));
    EXPECT_EQ(model.statusMessage(), "Enter a replacement term first.");
    EXPECT_EQ(model.customDictionaryEntries().size(), 2);
}

TEST_F(CustomDictionaryModelTest, persistingWritesBothKeysAndRemovingAndClearingFollow)
{
    fixture.makeModel().addCustomDictionaryEntry("Acme", std::nullopt, false);
    fixture.model().addCustomDictionaryEntry("open eye", "OpenAI", true);
    EXPECT_EQ(stored().stringListValue("customDictionaryTerms"), (QStringList{"Acme", "open eye"}));
    EXPECT_EQ(decodedCustomDictionaryEntries(stored().dataValue("customDictionaryEntries").value()),
              (Entries{term("Acme"), rule("open eye", "OpenAI")}));

    AppModel &model = fixture.makeModel(); // relaunched
    EXPECT_EQ(model.customDictionaryEntries(), storedEntries());
    model.removeCustomDictionaryEntry(term("ACME"));
    EXPECT_EQ(model.statusMessage(), "\"ACME\" removed from Dictionary.");
    model.clearTranscript(); // resets the status line
    const QString idle = model.statusMessage();
    model.removeCustomDictionaryEntry(term("Acme"));
    EXPECT_EQ(model.statusMessage(), idle);
    EXPECT_EQ(storedEntries(), (Entries{rule("open eye", "OpenAI")}));

    model.clearCustomDictionary();
    EXPECT_EQ(model.statusMessage(), "Dictionary cleared.");
    EXPECT_TRUE(storedEntries().isEmpty());
    model.clearCustomDictionary();
    EXPECT_EQ(model.statusMessage(), "Dictionary is already empty.");
}

TEST_F(CustomDictionaryModelTest, loadingCleansStoredDataAndFallsBackToTerms)
{
    // Entries stored as data (base64 JSON) beside the older list of terms.
    const auto both = [](const QByteArray &entries, const char *terms) {
        return R"({"customDictionaryEntries": {"$data": ")" + entries.toBase64() + R"("}, "customDictionaryTerms": )"
            + terms + "}";
    };
    const struct {
        const char *name;
        QByteArray preferences;
        Entries expected;
    } cases[] = {
        {"duplicates by case keep the first",
         both(R"([{"term":"Acme"},{"term":"ACME","replacement":"x"},{"term":"b","replacement":" \n"}])", R"(["ignored"])"),
         {term("Acme"), term("b")}},
        {"an empty list does not consult the terms", both("[]", R"(["ignored"])"), {}},
        {"only the old terms", R"({"customDictionaryTerms": [" Acme\nCorp ", "", "acme corp", "Zed"]})",
         {term("Acme Corp"), term("Zed")}},
        {"undecodable data falls back", both(R"([{"term":1}])", R"(["Zed"])"), {term("Zed")}},
        {"data of the wrong type falls back", R"({"customDictionaryEntries": "[]", "customDictionaryTerms": ["Zed"]})",
         {term("Zed")}},
    };
    for (const auto &c : cases) {
        writePreferences(c.preferences);
        EXPECT_EQ(fixture.makeModel().customDictionaryEntries(), c.expected) << c.name;
    }
}

} // namespace
