#include "FakeOpenAIServer.h"
#include "QtPrinters.h"
#include "TaskResult.h"

#include "services/OpenAIClient.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Reply = FakeOpenAIServer::Reply;
using Behaviour = FakeOpenAIServer::Behaviour;
constexpr auto json = &FakeOpenAIServer::json;

const QString decoding = QStringLiteral("The data couldn't be read because it isn't in the correct format.");

class OpenAIClientTest : public ::testing::Test
{
protected:
    OpenAIClientTest() { writeRecording("rec-1.m4a"); }

    void writeRecording(const QString &name)
    {
        recording = directory.filePath(name);
        QFile file(recording);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(audio);
    }
    TaskResult<QString> transcribe(std::optional<QString> language = std::nullopt,
                                   std::optional<QString> prompt = std::nullopt,
                                   TranscriptionMode mode = TranscriptionMode::fast)
    {
        return waitForResult(client.transcribeAudio(recording, "sk-test", mode, language, prompt));
    }
    TaskResult<QString> polish(const QString &text)
    {
        return waitForResult(client.polishTranscript(text, "sk-test", std::nullopt, std::nullopt));
    }
    static QByteArray boundaryOf(const FakeOpenAIServer::Request &request)
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
    const auto result = transcribe("de", "  Acme Corp \n", TranscriptionMode::moreAccurate);
    ASSERT_EQ(result.value, "Hello from the fake server.") << result.errorText().toStdString();
    ASSERT_EQ(server.requests().size(), 1);
    const auto &request = server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/v1/audio/transcriptions");
    EXPECT_EQ(request.headers.value("authorization"), "Bearer sk-test");
    const QByteArray boundary = boundaryOf(request);
    ASSERT_EQ(boundary.size(), 36);
    EXPECT_EQ(boundary, boundary.toUpper());
    EXPECT_FALSE(boundary.startsWith('{'));

    const QByteArray part = "--" + boundary + "\r\nContent-Disposition: form-data; name=";
    EXPECT_EQ(request.body, part + "\"model\"\r\n\r\ngpt-4o-transcribe\r\n" + part
                                + "\"response_format\"\r\n\r\njson\r\n" + part + "\"language\"\r\n\r\nde\r\n" + part
                                + "\"prompt\"\r\n\r\n  Acme Corp \n\r\n" + part
                                + "\"file\"; filename=\"rec-1.m4a\"\r\nContent-Type: audio/m4a\r\n\r\n" + audio
                                + "\r\n--" + boundary + "--\r\n");

    // Blank optional parts are left out; the fast mode has its own model.
    ASSERT_TRUE(transcribe(QString(), " \n\t ").value);
    const QByteArray plain = server.requests().last().body;
    EXPECT_FALSE(plain.contains("name=\"language\"") || plain.contains("name=\"prompt\""));
    EXPECT_TRUE(plain.contains("gpt-4o-mini-transcribe"));
    EXPECT_NE(boundaryOf(server.requests().last()), boundary);
}

TEST_F(OpenAIClientTest, chatPassesSendTwoMessagesAndNoTemperature)
{
    const TranslationLanguage english{"en", "English"};
    const InputLanguageHint german{"de", "German"};
    ASSERT_EQ(waitForResult(client.polishTranscript("  um hello  ", "sk-test", "- Acme", "Be brief.")).value,
              "Polished by the fake server.");
    ASSERT_TRUE(waitForResult(client.translateTranscript("Hallo", "sk-test", english, german)).value);

    ASSERT_EQ(server.requests().size(), 2);
    const auto &polish = server.requests()[0];
    EXPECT_EQ(polish.path, "/v1/chat/completions");
    EXPECT_EQ(polish.headers.value("content-type"), "application/json");
    EXPECT_EQ(polish.headers.value("authorization"), "Bearer sk-test");
    EXPECT_FALSE(polish.body.contains("temperature"));
    const QByteArray instructions =
        QJsonDocument(QJsonObject{{"c", OpenAIClient::polishInstructions("- Acme", "Be brief.")}})
            .toJson(QJsonDocument::Compact)
            .mid(5)
            .chopped(1);
    EXPECT_EQ(polish.body, R"({"messages":[{"content":)" + instructions
                               + R"(,"role":"developer"},{"content":"  um hello  ","role":"user"}],"model":"gpt-5.4-nano"})");

    const QJsonObject translation = QJsonDocument::fromJson(server.requests()[1].body).object();
    EXPECT_EQ(translation.value(u"model").toString(), "gpt-5.4-nano");
    EXPECT_EQ(translation.value(u"messages")[0][u"content"].toString(),
              OpenAIClient::translationInstructions(english, german));
    EXPECT_EQ(translation.value(u"messages")[1][u"content"].toString(), "Hallo");
}

TEST_F(OpenAIClientTest, instructionsHaveTheirSectionsInOrder)
{
    const QString head = OpenAIClient::polishInstructions(std::nullopt, std::nullopt);
    EXPECT_TRUE(head.startsWith("Rewrite dictated speech into clean, natural text.\n"));
    EXPECT_TRUE(head.endsWith("Do not add titles, explanations, quotes, notes, or follow-up questions."));
    EXPECT_EQ(OpenAIClient::polishInstructions(" \n", "\t"), head);
    EXPECT_EQ(OpenAIClient::polishInstructions(" G ", " P "),
              head + "\n\nAlso apply these user-provided polish instructions:\nP\n\nG");

    const TranslationLanguage german{"de", "German"};
    const QString translation = OpenAIClient::translationInstructions(german, std::nullopt);
    EXPECT_TRUE(translation.startsWith("Translate dictated speech into natural German (de).\n"
                                       "Preserve meaning, tone, paragraph breaks"));
    EXPECT_FALSE(translation.contains("\n\n"));
    EXPECT_EQ(OpenAIClient::translationInstructions(german, InputLanguageHint{"fr", "French"}),
              translation + "\n\nThe original speech language is likely French (fr).");
}

// Every kind of reply and every broken connection ends in a value or a message, never a
// crash or a hang. Which statuses fail is OpenAIReplyValidation's rule.
TEST_F(OpenAIClientTest, transcriptionReplyMatrix)
{
    const QString status = QStringLiteral("OpenAI request failed with status %1.");
    const Reply cut{200, FakeOpenAIServer::transcriptionBody("a long enough text"), "application/json",
                    Behaviour::closeMidReply};
    const struct {
        const char *name;
        Reply reply;
        std::optional<QString> text;
        std::optional<QString> error; // none: any message
        bool transport = false;
    } cases[] = {
        {"401 with error body", json(401, R"({"error":{"message":"Incorrect API key provided","type":"x"}})"),
         std::nullopt, "Incorrect API key provided"},
        {"500 HTML", Reply{500, "<html>", "text/html"}, std::nullopt, status.arg(500)},
        {"200 wrong shape", json(200, R"({"transcript":"hi"})"), std::nullopt, decoding},
        {"200 invalid UTF-8", json(200, "{\"text\":\"caf\xc3\x28\"}"), std::nullopt, decoding},
        {"299 blank text", json(299, R"({"text":"  \n"})"), std::nullopt, "OpenAI returned an empty transcription."},
        {"only a follow-up offer", json(200, R"({"text":"Let me know if you'd like any changes."})"), "", ""},
        {"trimmed and cleaned", json(200, R"({"text":" Hi.\n\nWould you like any changes? ","x":1})"), "Hi.", ""},
        {"reset mid-reply", cut, std::nullopt, std::nullopt, true},
        {"never answers", Reply{200, {}, "application/json", Behaviour::stall}, std::nullopt,
         "The request timed out.", true},
        {"50 MB body", Reply{200, {}, "application/json", Behaviour::hugeBody, 50LL * 1024 * 1024}, std::nullopt,
         "The server's reply was larger than 5 MB, so it was not read.", true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        server.enqueueReply("/v1/audio/transcriptions", c.reply);
        const auto result = transcribe();
        ASSERT_TRUE(result.finished);
        EXPECT_EQ(result.value, c.text);
        if (c.error) {
            EXPECT_EQ(result.errorText(), *c.error);
        } else {
            EXPECT_FALSE(result.errorText().isEmpty());
        }
        if (c.transport) {
            ASSERT_TRUE(result.error);
            EXPECT_THROW(std::rethrow_exception(result.error), PlatformError);
        }
    }
    // The huge reply was abandoned long before its end.
    EXPECT_LT(server.hugeBytesWritten(), 20LL * 1024 * 1024);
}

TEST_F(OpenAIClientTest, chatRepliesWithoutTextFallBackToTheCleanedInput)
{
    const QString input = QStringLiteral("  Ship it. Let me know if you want any changes  ");
    const struct {
        const char *name;
        Reply reply;
        std::optional<QString> result;
        QString error;
    } cases[] = {
        {"no choices", json(200, R"({"choices":[]})"), "Ship it.", ""},
        {"null content", json(200, R"({"choices":[{"message":{"content":null}}]})"), "Ship it.", ""},
        {"only an offer", json(200, FakeOpenAIServer::chatBody("Would you like any changes?")), "Ship it.", ""},
        {"answer cleaned", json(200, FakeOpenAIServer::chatBody(" Done: would you like me to make any changes?” ")),
         "Done", ""},
        {"choices not a list", json(200, R"({"choices":{}})"), std::nullopt, decoding},
        {"choice without message", json(200, R"({"choices":[{"text":"x"}]})"), std::nullopt, decoding},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        server.enqueueReply("/v1/chat/completions", c.reply);
        const auto result = polish(input);
        EXPECT_EQ(result.value, c.result);
        EXPECT_EQ(result.errorText(), c.error);
    }
}

TEST_F(OpenAIClientTest, plainHttpBeyondThisMachineNeverCarriesTheKey)
{
    OpenAIClient remote(&network, QUrl(QStringLiteral("http://speech.example.com:%1").arg(server.baseURL().port())));
    EXPECT_TRUE(waitForResult(remote.transcribeAudio(recording, "sk-test", TranscriptionMode::fast, {}, {}))
                    .errorText()
                    .contains("doesn't use HTTPS"));
    EXPECT_TRUE(waitForResult(remote.polishTranscript("x", "sk", {}, {})).errorText().contains("doesn't use HTTPS"));
    EXPECT_TRUE(server.requests().isEmpty());
}

} // namespace
