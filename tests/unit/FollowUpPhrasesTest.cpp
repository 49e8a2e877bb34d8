#include "services/FollowUpPhrases.h"
#include "services/OpenAIReplyValidation.h"

#include "models/QuorlaError.h"

#include <gtest/gtest.h>

namespace {

TEST(FollowUpPhrases, trailingOffersAreRemoved)
{
    const std::pair<QString, QString> cases[] = {
        {"Hello there.\n\nLet me know if you'd like any changes!", "Hello there."},
        {"Done: would you like me to make any changes?\u201D", "Done"},
        {"Let me know if you'd like any changes to the draft", "Let me know if you'd like any changes to the draft"},
        {"Ready \u2014 Let me know if you want any changes. Would you like any changes?", "Ready"}, // stacked
        {"Notes - ASK FOR FOLLOW-UP CHANGES", "Notes"},
        {"Text \u2013 let me know if you would like any changes.\u2019 '\"", "Text"},
        // Only the straight apostrophe belongs to the phrase.
        {"Hi. Let me know if you\u2019d like any changes.", "Hi. Let me know if you\u2019d like any changes."},
        {"Line one.\nWould you like any changes?\u00A0\n", "Line one."},
        {"No offer here.", "No offer here."},
    };
    for (const auto &[input, expected] : cases)
        EXPECT_EQ(normalizedWithoutFollowUpPhrases(input), expected) << input.toStdString();
}

TEST(OpenAIReplyValidation, onlyTwoHundredsSucceed)
{
    const auto failed = [](int status) { return QuorlaError::apiFailure(QString("OpenAI request failed with status %1.").arg(status)); };
    const std::tuple<std::optional<int>, QByteArray, std::optional<QuorlaError>> cases[] = {
        {200, "", std::nullopt},
        {299, "<html>", std::nullopt},
        {199, "", failed(199)},
        {300, "", failed(300)},
        {502, R"({"error":{"message":""}})", QuorlaError::apiFailure(QString())},
        {401, R"({"error":{"message":"Bad key"}})", QuorlaError::apiFailure("Bad key")},
        {400, R"({"error":"flat"})", failed(400)},
        {std::nullopt, "", QuorlaError(QuorlaError::Kind::invalidAPIResponse)},
    };
    for (const auto &[status, body, error] : cases) {
        std::optional<QuorlaError> thrown;
        try {
            validateOpenAIReply({status, body});
        } catch (const QuorlaError &e) {
            thrown = e;
        }
        EXPECT_EQ(thrown, error) << status.value_or(-1);
    }
}

} // namespace
