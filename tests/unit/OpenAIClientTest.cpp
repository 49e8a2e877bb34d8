#include "FakeOpenAIServer.h"
#include "TaskResult.h"

#include "services/OpenAIClient.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Reply = FakeOpenAIServer::Reply;
using Behaviour = FakeOpenAIServer::Behaviour;

class OpenAIClientTest : public ::testing::Test
{
protected:
    OpenAIClientTest()
    {
        recording = directory.filePath(QStringLiteral("rec-1.m4a"));
        QFile file(recording);
        file.open(QIODevice::WriteOnly);
        file.write(audio);
    }

    TaskResult<QString> transcribe(std::optional<QString> language = std::nullopt,
                                   std::optional<QString> prompt = std::nullopt,
                                   TranscriptionMode mode = TranscriptionMode::fast)
    {
        return waitForResult(client.transcribeAudio(recording, QStringLiteral("sk-test"), mode, language, prompt));
    }
    TaskResult<QString> polish(const QString &text)
    {
        return waitForResult(client.polishTranscript(text, QStringLiteral("sk-test"), std::nullopt, std::nullopt));
    }
    QByteArray boundaryOf(const FakeOpenAIServer::Request &request) const
    {
        return request.headers.value("content-type").mid(QByteArray("multipart/form-data; boundary=").size());
    }

    QTemporaryDir directory;
    QString recording;
    // Bytes of every value, CR and LF included, must come through untouched.
    const QByteArray audio = QByteArray("\x00\x01\r\n--\xff", 7) + QByteArray(300, 'a');
    FakeOpenAIServer server;
    QNetworkAccessManager network;
    OpenAIClient client{&network, server.baseURL(), std::chrono::milliseconds(500)};
};

TEST_F(OpenAIClientTest, transcriptionUploadIsByteExact)
{
    const auto result = transcribe(QStringLiteral("de"), QStringLiteral("  Acme Corp \n"), TranscriptionMode::moreAccurate);
    ASSERT_EQ(result.value, QStringLiteral("Hello from the fake server.")) << result.errorText().toStdString();
    ASSERT_EQ(server.requests().size(), 1);
    const auto &request = server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/v1/audio/transcriptions");
    EXPECT_EQ(request.headers.value("authorization"), "Bearer sk-test");
    const QByteArray boundary = boundaryOf(request);
    ASSERT_EQ(boundary.size(), 36);
    EXPECT_EQ(boundary, boundary.toUpper());
    EXPECT_FALSE(boundary.startsWith('{'));

    const QByteArray expected = "--" + boundary + "\r\nContent-Disposition: form-data; name=\"model\"\r\n\r\n"
        "gpt-4o-transcribe\r\n"
        "--" + boundary + "\r\nContent-Disposition: form-data; name=\"response_format\"\r\n\r\njson\r\n"
        "--" + boundary + "\r\nContent-Disposition: form-data; name=\"language\"\r\n\r\nde\r\n"
        "--" + boundary + "\r\nContent-Disposition: form-data; name=\"prompt\"\r\n\r\n  Acme Corp \n\r\n"
        "--" + boundary + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"rec-1.m4a\"\r\n"
        "Content-Type: audio/m4a\r\n\r\n" + audio + "\r\n"
        "--" + boundary + "--\r\n";
    EXPECT_EQ(request.body, expected);
}

TEST_F(OpenAIClientTest, optionalPartsFollowTheirPresenceRules)
{
    struct Case {
        std::optional<QString> language;
        std::optional<QString> prompt;
        bool hasLanguage;
        bool hasPrompt;
    };
    const Case cases[] = {
        {std::nullopt, std::nullopt, false, false},
        {QString(), QStringLiteral(" \n\t "), false, false},
        {QStringLiteral(" en"), QStringLiteral("x"), true, true},
    };
    for (const Case &c : cases) {
        ASSERT_TRUE(transcribe(c.language, c.prompt).value);
        const QByteArray body = server.requests().last().body;
        EXPECT_EQ(body.contains("name=\"language\""), c.hasLanguage);
        EXPECT_EQ(body.contains("name=\"prompt\""), c.hasPrompt);
        if (c.hasLanguage) { // sent as given, untrimmed
            EXPECT_TRUE(body.contains("name=\"language\"\r\n\r\n en\r\n"));
        }
        EXPECT_TRUE(body.contains("gpt-4o-mini-transcribe"));
    }
    // Every request has a boundary of its own.
    EXPECT_NE(boundaryOf(server.requests()[0]), boundaryOf(server.requests()[1]));
}

TEST_F(OpenAIClientTest, chatPassesSendTwoMessagesAndNoTemperature)
{
    const auto polished = waitForResult(client.polishTranscript(QStringLiteral("  um hello  "), QStringLiteral("sk-test"),
                                                                QStringLiteral("- Acme"), QStringLiteral("Be brief.")));
    ASSERT_EQ(polished.value, QStringLiteral("Polished by the fake server."));
    const auto translated = waitForResult(client.translateTranscript(
        QStringLiteral("Hallo"), QStringLiteral("sk-test"), {QStringLiteral("en"), QStringLiteral("English")},
        InputLanguageHint{QStringLiteral("de"), QStringLiteral("German")}));
    ASSERT_TRUE(translated.value);

    ASSERT_EQ(server.requests().size(), 2);
    const auto &polish = server.requests()[0];
    EXPECT_EQ(polish.path, "/v1/chat/completions");
    EXPECT_EQ(polish.headers.value("content-type"), "application/json");
    EXPECT_EQ(polish.headers.value("authorization"), "Bearer sk-test");
    EXPECT_FALSE(polish.body.contains("temperature"));
    const QByteArray instructions =
        QJsonDocument(QJsonObject{{QStringLiteral("c"), OpenAIClient::polishInstructions(QStringLiteral("- Acme"),
                                                                                        QStringLiteral("Be brief."))}})
            .toJson(QJsonDocument::Compact)
            .mid(5)
            .chopped(1);
    EXPECT_EQ(polish.body, R"({"messages":[{"content":)" + instructions
                               + R"(,"role":"developer"},{"content":"  um hello  ","role":"user"}],"model":"gpt-5.4-nano"})");

    const QJsonObject translation = QJsonDocument::fromJson(server.requests()[1].body).object();
    EXPECT_EQ(translation.value(u"model").toString(), QStringLiteral("gpt-5.4-nano"));
    EXPECT_EQ(translation.value(u"messages")[0][u"content"].toString(),
              OpenAIClient::translationInstructions({QStringLiteral("en"), QStringLiteral("English")},
                                                    InputLanguageHint{QStringLiteral("de"), QStringLiteral("German")}));
    EXPECT_EQ(translation.value(u"messages")[1][u"content"].toString(), QStringLiteral("Hallo"));
}

TEST_F(OpenAIClientTest, instructionsHaveTheirSectionsInOrder)
{
    const QString head = OpenAIClient::polishInstructions(std::nullopt, std::nullopt);
    EXPECT_TRUE(head.startsWith(QStringLiteral("Rewrite dictated speech into clean, natural text.\n")));
    EXPECT_TRUE(head.endsWith(QStringLiteral("Do not add titles, explanations, quotes, notes, or follow-up questions.")));
    EXPECT_EQ(OpenAIClient::polishInstructions(QStringLiteral(" \n"), QStringLiteral("\t")), head);
    EXPECT_EQ(OpenAIClient::polishInstructions(QStringLiteral(" G "), QStringLiteral(" P ")),
              head + QStringLiteral("\n\nAlso apply these user-provided polish instructions:\nP\n\nG"));

    const TranslationLanguage german{QStringLiteral("de"), QStringLiteral("German")};
    const QString translation = OpenAIClient::translationInstructions(german, std::nullopt);
    EXPECT_TRUE(translation.startsWith(QStringLiteral("Translate dictated speech into natural German (de).\n"
                                                      "Preserve meaning, tone, paragraph breaks")));
    EXPECT_FALSE(translation.contains(QStringLiteral("\n\n")));
    EXPECT_EQ(OpenAIClient::translationInstructions(german, InputLanguageHint{QStringLiteral("fr"), QStringLiteral("French")}),
              translation + QStringLiteral("\n\nThe original speech language is likely French (fr)."));
}

// Every reply a service might give ends in a message, never a crash or a hang.
TEST_F(OpenAIClientTest, transcriptionReplyMatrix)
{
    const QByteArray html = "<html><body><h1>502 Bad Gateway</h1></body></html>";
    const QString decoding = QStringLiteral("The data couldn't be read because it isn't in the correct format.");
    struct Case {
        const char *name;
        Reply reply;
        std::optional<QString> text;
        QString error;
    };
    const std::vector<Case> cases = {
        {"401 with error body", FakeOpenAIServer::json(401, R"({"error":{"message":"Incorrect API key provided","type":"x"}})"),
         std::nullopt, QStringLiteral("Incorrect API key provided")},
        {"429 with JSON", FakeOpenAIServer::json(429, R"({"error":{"message":"Rate limit reached"}})"), std::nullopt,
         QStringLiteral("Rate limit reached")},
        {"429 without JSON", FakeOpenAIServer::json(429, "slow down"), std::nullopt,
         QStringLiteral("OpenAI request failed with status 429.")},
        {"500 with JSON lacking message", FakeOpenAIServer::json(500, R"({"error":{"code":1}})"), std::nullopt,
         QStringLiteral("OpenAI request failed with status 500.")},
        {"500 HTML", Reply{500, html, "text/html"}, std::nullopt, QStringLiteral("OpenAI request failed with status 500.")},
        {"407 without JSON", FakeOpenAIServer::json(407, ""), std::nullopt,
         QStringLiteral("OpenAI request failed with status 407.")},
        {"300 is a failure", FakeOpenAIServer::json(300, "{}"), std::nullopt,
         QStringLiteral("OpenAI request failed with status 300.")},
        {"200 HTML", Reply{200, html, "text/html"}, std::nullopt, decoding},
        {"200 wrong shape", FakeOpenAIServer::json(200, R"({"transcript":"hi"})"), std::nullopt, decoding},
        {"200 text not a string", FakeOpenAIServer::json(200, R"({"text":5})"), std::nullopt, decoding},
        {"200 JSON array", FakeOpenAIServer::json(200, R"(["text"])"), std::nullopt, decoding},
        {"200 empty body", FakeOpenAIServer::json(200, ""), std::nullopt, decoding},
        {"200 invalid UTF-8", FakeOpenAIServer::json(200, "{\"text\":\"caf\xc3\x28\"}"), std::nullopt, decoding},
        {"299 blank text", FakeOpenAIServer::json(299, R"({"text":"  \n"})"), std::nullopt,
         QStringLiteral("OpenAI returned an empty transcription.")},
        {"only a follow-up offer", FakeOpenAIServer::json(200, R"({"text":"Let me know if you'd like any changes."})"),
         QString(), QString()},
        {"slow but steady", Reply{200, FakeOpenAIServer::transcriptionBody(QStringLiteral("Slow.")), "application/json",
                                  Behaviour::answerSlowly, 5},
         QStringLiteral("Slow."), QString()},
        {"trimmed and cleaned", FakeOpenAIServer::json(200, R"({"text":" Hi.\n\nWould you like any changes? ","x":1})"),
         QStringLiteral("Hi."), QString()},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        server.enqueueReply("/v1/audio/transcriptions", c.reply);
        const auto result = transcribe();
        ASSERT_TRUE(result.finished);
        EXPECT_EQ(result.value, c.text);
        EXPECT_EQ(result.errorText(), c.error);
    }
}

TEST_F(OpenAIClientTest, brokenConnectionsFailWithTransportErrors)
{
    struct Case {
        const char *name;
        Reply reply;
        QString error;
    };
    const std::vector<Case> cases = {
        {"reset mid-reply", Reply{200, FakeOpenAIServer::transcriptionBody(QStringLiteral("a long enough text")),
                                  "application/json", Behaviour::closeMidReply},
         QString()},
        {"never answers", Reply{200, {}, "application/json", Behaviour::stall}, QStringLiteral("The request timed out.")},
        {"50 MB body", Reply{200, {}, "application/json", Behaviour::hugeBody, 0, 50LL * 1024 * 1024},
         QStringLiteral("The server's reply was larger than 5 MB, so it was not read.")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        server.enqueueReply("/v1/audio/transcriptions", c.reply);
        const auto result = transcribe();
        ASSERT_TRUE(result.finished);
        EXPECT_FALSE(result.value);
        ASSERT_TRUE(result.error);
        EXPECT_THROW(std::rethrow_exception(result.error), PlatformError);
        if (!c.error.isEmpty()) {
            EXPECT_EQ(result.errorText(), c.error);
        }
        EXPECT_FALSE(result.errorText().isEmpty());
    }
    // The huge reply was abandoned long before its end.
    EXPECT_LT(server.hugeBytesWritten(), 20LL * 1024 * 1024);
}

TEST_F(OpenAIClientTest, chatRepliesWithoutTextFallBackToTheCleanedInput)
{
    const QString input = QStringLiteral("  Ship it. Let me know if you want any changes  ");
    struct Case {
        const char *name;
        QByteArray body;
        std::optional<QString> result;
        QString error;
    };
    const std::vector<Case> cases = {
        {"no choices", R"({"choices":[]})", QStringLiteral("Ship it."), QString()},
        {"null content", R"({"choices":[{"message":{"content":null}}]})", QStringLiteral("Ship it."), QString()},
        {"absent content", R"({"choices":[{"message":{}}]})", QStringLiteral("Ship it."), QString()},
        {"blank content", R"({"choices":[{"message":{"content":" \n"}}]})", QStringLiteral("Ship it."), QString()},
        {"only an offer", FakeOpenAIServer::chatBody(QStringLiteral("Would you like any changes?")),
         QStringLiteral("Ship it."), QString()},
        {"answer cleaned", FakeOpenAIServer::chatBody(QStringLiteral(" Done: would you like me to make any changes?” ")),
         QStringLiteral("Done"), QString()},
        {"choices not a list", R"({"choices":{}})", std::nullopt,
         QStringLiteral("The data couldn't be read because it isn't in the correct format.")},
        {"choice without message", R"({"choices":[{"text":"x"}]})", std::nullopt,
         QStringLiteral("The data couldn't be read because it isn't in the correct format.")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        server.enqueueReply("/v1/chat/completions", FakeOpenAIServer::json(200, c.body));
        const auto result = polish(input);
        EXPECT_EQ(result.value, c.result);
        EXPECT_EQ(result.errorText(), c.error);
    }
    server.enqueueReply("/v1/chat/completions", FakeOpenAIServer::json(401, R"({"error":{"message":"Bad key"}})"));
    EXPECT_EQ(polish(input).errorText(), QStringLiteral("Bad key"));
}

TEST_F(OpenAIClientTest, fileNameCannotBreakThePartHeader)
{
    recording = directory.filePath(QStringLiteral("take \"2\"\r\nX: y.m4a"));
    QFile file(recording);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(audio);
    file.close();
    ASSERT_TRUE(transcribe().value);
    EXPECT_TRUE(server.requests().last().body.contains("filename=\"take %222%22%0D%0AX: y.m4a\"\r\n"));
}

TEST_F(OpenAIClientTest, missingRecordingFailsBeforeAnythingIsSent)
{
    recording = directory.filePath(QStringLiteral("gone.m4a"));
    const auto result = transcribe();
    ASSERT_TRUE(result.error);
    EXPECT_THROW(std::rethrow_exception(result.error), PlatformError);
    EXPECT_TRUE(result.errorText().contains(QStringLiteral("gone.m4a")));
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(OpenAIClientTest, plainHttpBeyondThisMachineNeverCarriesTheKey)
{
    OpenAIClient remote(&network, QUrl(QStringLiteral("http://speech.example.com:%1").arg(server.baseURL().port())));
    const auto result =
        waitForResult(remote.transcribeAudio(recording, QStringLiteral("sk-test"), TranscriptionMode::fast, {}, {}));
    EXPECT_TRUE(result.errorText().contains(QStringLiteral("doesn't use HTTPS")));
    const auto chat = waitForResult(remote.polishTranscript(QStringLiteral("x"), QStringLiteral("sk"), {}, {}));
    EXPECT_TRUE(chat.errorText().contains(QStringLiteral("doesn't use HTTPS")));
    EXPECT_TRUE(server.requests().isEmpty());
}

} // namespace
