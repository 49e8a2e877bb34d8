#include "FakeSpeechService.h"
#include "TaskResult.h"

#include "services/DictationPipeline.h"

#include <gtest/gtest.h>

namespace {

const InputLanguageHint english{"en", "English"};
const InputLanguageHint german{"de", "German"};
const TranslationLanguage toGerman{"de", "German"};
const QString empty = "OpenAI returned an empty transcription.";

// Settings and replies in, requests sent and the final text (or error) out.
TEST(DictationPipelineTest, sendsWhatTheSettingsAskForAndReturnsTheCleanedText)
{
    const struct {
        const char *name;
        std::optional<InputLanguageHint> language;
        std::optional<QString> guidance, polishPrompt;
        bool polish;
        std::optional<TranslationLanguage> target;
        QString transcript, polished, result;
        QStringList requests;
    } cases[] = {
        {"plain", german, {}, {}, false, {}, " Hallo.\n", {}, "Hallo.", {"transcribe sk moreAccurate de"}},
        {"follow-up offer dropped", {}, {}, {}, false, {}, "Hi. Let me know if you'd like any changes.", {}, "Hi.", {"transcribe sk moreAccurate -"}},
        {"polish with the dictionary and the user's prompt", english, "- Acme", "Formal", true, {}, "um acme", "Acme.", "Acme.", {"transcribe sk moreAccurate en [prompt]", "polish 'um acme' - Acme Formal"}},
        {"polish, then translation with the speech language as source", english, {}, {}, true, toGerman, "hi", "Hi.", "Hi.", {"transcribe sk moreAccurate en", "polish 'hi' - -", "translate 'Hi.' de from en English"}},
        {"no translation into the speech language", german, {}, {}, false, toGerman, "Hallo", {}, "Hallo", {"transcribe sk moreAccurate de"}},
        {"translation without a known speech language", {}, {}, {}, false, toGerman, "Hello", {}, "Hello", {"transcribe sk moreAccurate -", "translate 'Hello' de from -"}},
        {"empty reply", english, {}, {}, true, {}, " \n", {}, empty, {"transcribe sk moreAccurate en"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        auto speech = std::make_shared<FakeSpeechService>();
        speech->transcript = c.transcript;
        speech->polished = c.polished;
        const DictationRequest request{"/tmp/dictation.m4a", "sk", TranscriptionMode::moreAccurate, c.language, c.guidance, c.polish, c.polishPrompt, c.target, {}};
        const TaskResult<QString> result = waitForResult(DictationPipeline(speech).run(request));
        EXPECT_EQ(result.value.value_or(result.errorText()), c.result);
        EXPECT_EQ(speech->requests, c.requests);
    }
}

} // namespace
