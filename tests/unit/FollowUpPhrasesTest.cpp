#include "services/FollowUpPhrases.h"
#include "services/OpenAIReplyValidation.h"

#include "models/QuorlaError.h"

#include <gtest/gtest.h>

namespace {

TEST(FollowUpPhrases, trailingOffersAreRemoved)
{
    const struct {
        QString input;
        QString expected;
    } cases[] = {
        {"Hello there.\n\nLet me know if you'd like any changes!", "Hello there."},
        {"Done: would you like me to make any changes?\u201D", "Done"},
        {"Would you like any changes?", QString()},
        {"Let me know if you'd like any changes to the draft", "Let me know if you'd like any changes to the draft"},
        // Stacked offers go one after another.
        {"Ready \u2014 Let me know if you want any changes. Would you like any changes?", "Ready"},
        {"Notes - ASK FOR FOLLOW-UP CHANGES", "Notes"},
        {QStringLiteral("Text \u2013 let me know if you would like any changes.\u2019 '\""), "Text"},
        // Only the straight apostrophe belongs to the phrase.
        {"Hi. Let me know if you\u2019d like any changes.", "Hi. Let me know if you\u2019d like any changes."},
        {"Line one.\nWould you like any changes?\u00A0\n", "Line one."},
        {"No offer here.", "No offer here."}, {QString(), QString()},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedWithoutFollowUpPhrases(c.input), c.expected) << c.input.toStdString();
}

TEST(OpenAIReplyValidation, onlyTwoHundredsSucceed)
{
    const struct {
        std::optional<int> status;
        QByteArray body;
        std::optional<QuorlaError> error;
    } cases[] = {
        {200, "", std::nullopt}, {299, "<html>", std::nullopt},
        {199, "", QuorlaError::apiFailure("OpenAI request failed with status 199.")},
        {300, "", QuorlaError::apiFailure("OpenAI request failed with status 300.")},
        {502, R"({"error":{"message":""}})", QuorlaError::apiFailure(QString())},
        {401, R"({"error":{"message":"Incorrect API key provided"}})",
         QuorlaError::apiFailure("Incorrect API key provided")},
        {400, R"({"error":"flat"})", QuorlaError::apiFailure("OpenAI request failed with status 400.")},
        {std::nullopt, "", QuorlaError(QuorlaError::Kind::invalidAPIResponse)},
    };
    for (const auto &c : cases) {
        std::optional<QuorlaError> thrown;
        try {
            validateOpenAIReply({c.status, c.body});
        } catch (const QuorlaError &error) {
            thrown = error;
        }
        EXPECT_EQ(thrown, c.error) << c.status.value_or(-1);
    }
}

} // namespace
