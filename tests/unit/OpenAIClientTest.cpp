#include "FakeOpenAIServer.h"
#include "QtPrinters.h"
#include "TaskResult.h"

#include "services/OpenAIClient.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Reply = FakeOpenAIServer::Reply;
using Behaviour = FakeOpenAIServer::Behaviour;
constexpr auto json = &FakeOpenAIServer::json;

const QString decoding = "The data couldn't be read because it isn't in the correct format.";

class OpenAIClientTest : public ::testing::Test
{
protected:
    OpenAIClientTest()
    {
        QFile file(recording);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(audio) == audio.size());
    }
    TaskResult<QString> transcribe(std::optional<QString> language = {}, std::optional<QString> prompt = {},
                                   TranscriptionMode mode = TranscriptionMode::fast)
    {
        return waitForResult(client.transcribeAudio(recording, "sk-test", mode, language, prompt));
    }

    QTemporaryDir directory;
    const QString recording = directory.filePath("rec-1.m4a");
    // Bytes of every value, CR and LF included, must come through untouched.
    const QByteArray audio = QByteArray("\x00\x01\r\n--\xff", 7) + QByteArray(300, 'a');
    FakeOpenAIServer server;
    QNetworkAccessManager network;
    OpenAIClient client{&network, server.baseURL(), std::chrono::milliseconds(500)};
};

TEST_F(OpenAIClientTest, transcriptionUploadIsByteExact)
{
    ASSERT_EQ(transcribe("de", "  Acme Corp \n", TranscriptionMode::moreAccurate).value, "Hello from the fake server.");
    const auto &request = server.requests().first();
    EXPECT_EQ(request.method + " " + request.path, "POST /v1/audio/transcriptions");
    EXPECT_EQ(request.headers.value("authorization"), "Bearer sk-test");
    const QByteArray boundary = request.headers.value("content-type").mid(30);
    ASSERT_EQ(boundary.size(), 36);
    const QByteArray part = "--" + boundary + "\r\nContent-Disposition: form-data; name=";
    EXPECT_EQ(request.body, part + "\"model\"\r\n\r\ngpt-4o-transcribe\r\n" + part + "\"response_format\"\r\n\r\njson\r\n"
                                + part + "\"language\"\r\n\r\nde\r\n" + part + "\"prompt\"\r\n\r\n  Acme Corp \n\r\n" + part
                                + "\"file\"; filename=\"rec-1.m4a\"\r\nContent-Type: audio/m4a\r\n\r\n" + audio
                                + "\r\n--" + boundary + "--\r\n");

    // Blank optional parts are left out; the fast mode has its own model.
    ASSERT_TRUE(transcribe(QString(), " \n\t ").value);
    const QByteArray plain = server.requests().last().body;
    EXPECT_FALSE(plain.contains("name=\"language\"") || plain.contains("name=\"prompt\""));
    EXPECT_TRUE(plain.contains("gpt-4o-mini-transcribe"));
}

TEST_F(OpenAIClientTest, chatPassesSendTheirInstructionsAndTheText)
{
    const TranslationLanguage german{"de", "German"};
    const QString polish = OpenAIClient::polishInstructions(std::nullopt, std::nullopt);
    EXPECT_TRUE(polish.startsWith("Rewrite dictated speech into clean, natural text.\n"));
    EXPECT_EQ(OpenAIClient::polishInstructions(" \n", "\t"), polish);
    EXPECT_EQ(OpenAIClient::polishInstructions(" G ", " P "),
              polish + "\n\nAlso apply these user-provided polish instructions:\nP\n\nG");
    const QString translation = OpenAIClient::translationInstructions(german, std::nullopt);
    EXPECT_TRUE(translation.startsWith("Translate dictated speech into natural German (de).\nPreserve meaning"));
    EXPECT_EQ(OpenAIClient::translationInstructions(german, InputLanguageHint{"fr", "French"}),
              translation + "\n\nThe original speech language is likely French (fr).");

    ASSERT_EQ(waitForResult(client.polishTranscript("  um hello  ", "sk-test", "- Acme", "Be brief.")).value,
              "Polished by the fake server.");
    ASSERT_TRUE(waitForResult(client.translateTranscript("Hallo", "sk-test", german, std::nullopt)).value);
    const auto &request = server.requests()[0];
    EXPECT_EQ(request.headers.value("content-type"), "application/json");
    const auto quoted = [](const QString &text) {
        return QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact).mid(1).chopped(1);
    };
    const auto body = [&](const QString &instructions, const QByteArray &text) {
        return R"({"messages":[{"content":)" + quoted(instructions) + R"(,"role":"developer"},{"content":)" + text
             + R"(,"role":"user"}],"model":"gpt-5.4-nano"})";
    };
    EXPECT_EQ(request.body, body(OpenAIClient::polishInstructions("- Acme", "Be brief."), R"("  um hello  ")"));
    EXPECT_EQ(server.requests()[1].body, body(translation, R"("Hallo")"));
}

// Every kind of reply and every broken connection ends in a value or a message, never a
// crash or a hang. Which statuses fail is OpenAIReplyValidation's rule.
TEST_F(OpenAIClientTest, transcriptionReplyMatrix)
{
    const QString any = "*";
    const struct {
        Reply reply;
        std::optional<QString> text;
        QString error;
    } cases[] = {
        {json(401, R"({"error":{"message":"Incorrect API key provided","type":"x"}})"), {}, "Incorrect API key provided"},
        {json(200, R"({"transcript":"hi"})"), {}, decoding},
        {json(200, "{\"text\":\"caf\xc3\x28\"}"), {}, decoding},
        {json(299, R"({"text":"  \n"})"), {}, "OpenAI returned an empty transcription."},
        {json(200, R"({"text":"Let me know if you'd like any changes."})"), "", ""},
        {Reply{200, R"({"text":"a long enough text"})", "application/json", Behaviour::closeMidReply}, {}, any},
        {Reply{200, {}, "application/json", Behaviour::stall}, {}, "The request timed out."},
        {Reply{200, {}, "application/json", Behaviour::hugeBody, 50LL * 1024 * 1024}, {}, "The server's reply was larger than 5 MB, so it was not read."},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reply.body.toStdString() + " " + std::to_string(int(c.reply.behaviour)));
        server.enqueueReply("/v1/audio/transcriptions", c.reply);
        const auto result = transcribe();
        ASSERT_TRUE(result.finished);
        EXPECT_EQ(result.value, c.text);
        EXPECT_EQ(c.error == any ? any : result.errorText(), c.error);
        if (c.reply.behaviour != Behaviour::answer) {
            EXPECT_THROW(std::rethrow_exception(result.error), PlatformError);
        }
    }
}

TEST_F(OpenAIClientTest, chatRepliesWithoutTextFallBackToTheCleanedInput)
{
    const std::tuple<QByteArray, std::optional<QString>, QString> cases[] = {
        {R"({"choices":[]})", "Ship it.", ""},
        {R"({"choices":[{"message":{"content":null}}]})", "Ship it.", ""},
        {FakeOpenAIServer::chatBody("Would you like any changes?"), "Ship it.", ""},
        {R"({"choices":{}})", std::nullopt, decoding},
        {R"({"choices":[{"text":"x"}]})", std::nullopt, decoding},
    };
    for (const auto &[reply, text, error] : cases) {
        server.enqueueReply("/v1/chat/completions", json(200, reply));
        const auto result = waitForResult(
            client.polishTranscript("  Ship it. Let me know if you want any changes  ", "sk-test", {}, {}));
        EXPECT_EQ(result.value, text) << reply.toStdString();
        EXPECT_EQ(result.errorText(), error) << reply.toStdString();
    }
}

TEST_F(OpenAIClientTest, plainHttpBeyondThisMachineNeverCarriesTheKey)
{
    OpenAIClient remote(&network, QUrl(QStringLiteral("http://speech.example.com:%1").arg(server.baseURL().port())));
    EXPECT_TRUE(waitForResult(remote.polishTranscript("x", "sk", {}, {})).errorText().contains("doesn't use HTTPS"));
    EXPECT_TRUE(server.requests().isEmpty());
}

} // namespace
