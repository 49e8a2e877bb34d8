#include "ModelTest.h"

#include "models/CustomDictionary.h"
#include "models/TranscriptionPrompt.h"
#include "stores/CustomDictionaryStorage.h"

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

TEST(CustomDictionaryText, linesAreJoinedAndKeysFoldOnlyCaseAndAccents)
{
    const std::pair<QString, std::optional<QString>> cases[] = {
        {"  Acme\n\n  Corp  ", "Acme Corp"},
        {"MiXeD\t  case", "MiXeD\t  case"},
        {"\n \t", std::nullopt},
        {"one\r\ntwo\u2028three", "one two three"},
    };
    for (const auto &[input, expected] : cases)
        EXPECT_EQ(normalizedCustomDictionaryText(input), expected) << input.toStdString();
    EXPECT_EQ(foldedCustomDictionaryKey("İstanbul"), foldedCustomDictionaryKey("istanbul"));
    EXPECT_NE(foldedCustomDictionaryKey("Acme Corp"), foldedCustomDictionaryKey("AcmeCorp"));
}

// What the transcription request carries for a dictionary, word for word.
TEST(CustomDictionaryText, theTranscriptionPromptWrapsTheGuidance)
{
    const QString head = "You are transcribing spoken audio.\nApply these dictionary rules directly in the transcript "
                         "you return.\nThe transcript may include names, email addresses, company names, or product "
                         "terms.\nIf any of these terms are spoken or clearly intended, the returned transcript must "
                         "use these exact spellings, capitalization, punctuation, and symbols:\n";
    const QString rules = "If any of these spoken forms are heard or clearly intended, the returned transcript must "
                          "replace them with the exact output shown:\n- open eye -> OpenAI\nReturn only the transcript text.";
    EXPECT_EQ(transcriptionPrompt(customDictionaryGuidance({term(" \n")})), std::nullopt);
    EXPECT_EQ(transcriptionPrompt(customDictionaryGuidance({rule("open eye", "OpenAI"), term("Acme Corp"), term("a@b.io")})),
              head + "- Acme Corp\n- a@b.io\n\n" + rules);
}

class CustomDictionaryModelTest : public ModelTest
{
protected:
    [[nodiscard]] Entries storedEntries() const { return loadedCustomDictionaryEntries(stored()); }
};

TEST_F(CustomDictionaryModelTest, addingUpdatesByCaseOrAccentAndRefusesDuplicatesAndBlanks)
{
    AppModel &model = fixture.makeModel();
    const struct {
        QString text;
        std::optional<QString> replacement;
        bool added;
        QString status;
    } steps[] = {
        {"  Acme Corp\n", std::nullopt, true, "\"Acme Corp\" added to Dictionary."},
        {"cafe", std::nullopt, true, "\"cafe\" added to Dictionary."},
        {"acme corp", std::nullopt, true, "\"acme corp\" updated in Dictionary."},
        {"Café", "CAFÉ", true, "\"Café\" updated in Dictionary."},
        {"Café ", " CAFÉ", false, "\"Café\" is already in Dictionary."},
        {" \n\t", "x", false, "Enter a name, email, or company term first."},
        {"open eye", "  ", false, "Enter a replacement term first."},
    };
    for (const auto &s : steps) {
        EXPECT_EQ(model.addCustomDictionaryEntry(s.text, s.replacement, s.replacement.has_value()), s.added);
        EXPECT_EQ(model.statusMessage(), s.status);
    }
    EXPECT_EQ(model.customDictionaryEntries(), (Entries{term("acme corp"), rule("Café", "CAFÉ")}));
    // Dropping the replacement is a change, not a duplicate.
    EXPECT_TRUE(model.addCustomDictionaryEntry("Café", std::nullopt, false));
    EXPECT_EQ(storedEntries(), (Entries{term("acme corp"), term("Café")}));
}

TEST_F(CustomDictionaryModelTest, persistingWritesBothKeysAndRemovingAndClearingFollow)
{
    fixture.makeModel().addCustomDictionaryEntry("Acme", std::nullopt, false);
    fixture.model().addCustomDictionaryEntry("open eye", "OpenAI", true);
    EXPECT_EQ(stored().stringListValue("customDictionaryTerms"), (QStringList{"Acme", "open eye"}));
    AppModel &model = fixture.makeModel(); // relaunched
    EXPECT_EQ(model.customDictionaryEntries(), (Entries{term("Acme"), rule("open eye", "OpenAI")}));
    model.removeCustomDictionaryEntry(term("ACME"));
    EXPECT_EQ(model.statusMessage(), "\"ACME\" removed from Dictionary.");
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
    const std::pair<QByteArray, Entries> cases[] = {
        {both(R"([{"term":"Acme"},{"term":"ACME","replacement":"x"},{"term":"b","replacement":" \n"}])", R"(["no"])"),
         {term("Acme"), term("b")}},
        {both("[]", R"(["ignored"])"), {}},
        {R"({"customDictionaryTerms": [" Acme\nCorp ", "", "acme corp", "Zed"]})", {term("Acme Corp"), term("Zed")}},
        {both(R"([{"term":1}])", R"(["Zed"])"), {term("Zed")}},
        {R"({"customDictionaryEntries": "[]", "customDictionaryTerms": ["Zed"]})", {term("Zed")}},
    };
    for (const auto &[preferences, expected] : cases) {
        writePreferences(preferences);
        EXPECT_EQ(fixture.makeModel().customDictionaryEntries(), expected) << preferences.toStdString();
    }
}

} // namespace
