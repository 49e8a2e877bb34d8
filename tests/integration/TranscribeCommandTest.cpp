#include "FakeOpenAIServer.h"

#include "models/CustomDictionary.h"
#include "models/TranscriptionPrompt.h"
#include "services/OpenAIClient.h"
#include "stores/PreferencesStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// `quorla transcribe` as a user runs it: the built binary, its own preferences,
// the key from the environment, the fake server in place of the service.
class TranscribeCommandTest : public ::testing::Test
{
protected:
    struct Run {
        int exitCode = -1;
        QString out;
        QString err;
    };

    TranscribeCommandTest()
    {
        recording = home.filePath(QStringLiteral("dictation.m4a"));
        QFile file(recording);
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(41 * 1024, '\x42'));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), server.baseURL().toString());
        environment.insert(QStringLiteral("OPENAI_API_KEY"), QStringLiteral(" sk-cli \n"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    }

    PreferencesStore preferences() const
    {
        return PreferencesStore(home.filePath(QStringLiteral("config/Quorla/preferences.json")));
    }

    Run run(const QStringList &arguments)
    {
        QProcess quorla;
        quorla.setProcessEnvironment(environment);
        QSignalSpy finished(&quorla, &QProcess::finished);
        quorla.start(QStringLiteral(QUORLA_BINARY), QStringList{QStringLiteral("transcribe")} + arguments);
        // The event loop runs meanwhile, so the in-process fake server answers.
        if (!finished.wait(60000))
            quorla.kill();
        return {quorla.exitStatus() == QProcess::NormalExit ? quorla.exitCode() : -1,
                QString::fromUtf8(quorla.readAllStandardOutput()), QString::fromUtf8(quorla.readAllStandardError())};
    }

    static QJsonArray messagesOf(const FakeOpenAIServer::Request &request)
    {
        return QJsonDocument::fromJson(request.body).object().value(u"messages").toArray();
    }

    QTemporaryDir home;
    QString recording;
    FakeOpenAIServer server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

TEST_F(TranscribeCommandTest, printsTheTranscriptOfAPlainRun)
{
    server.setReply("/v1/audio/transcriptions",
                    FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(QStringLiteral(" Grüße aus Köln. "))));
    const Run result = run({recording});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("Grüße aus Köln.\n"));
    EXPECT_EQ(result.err, QString());
    ASSERT_EQ(server.requests().size(), 1);
    const auto &request = server.requests().first();
    EXPECT_EQ(request.headers.value("authorization"), "Bearer sk-cli");
    EXPECT_TRUE(request.body.contains("gpt-4o-mini-transcribe"));
    EXPECT_FALSE(request.body.contains("name=\"language\""));
    EXPECT_TRUE(request.body.contains("filename=\"dictation.m4a\""));
}

TEST_F(TranscribeCommandTest, runsDictionaryPolishAndTranslationFromThePreferences)
{
    const QList<CustomDictionaryEntry> entries{{QStringLiteral("Acme Corp"), std::nullopt},
                                               {QStringLiteral("open eye"), QStringLiteral("OpenAI")}};
    {
        PreferencesStore stored = preferences();
        QJsonArray encoded;
        for (const auto &entry : entries) {
            QJsonObject object{{QStringLiteral("term"), entry.term}};
            if (entry.replacement)
                object.insert(QStringLiteral("replacement"), *entry.replacement);
            encoded.append(object);
        }
        stored.setData(QStringLiteral("customDictionaryEntries"), QJsonDocument(encoded).toJson());
        stored.setBool(QStringLiteral("shouldPolishTranscript"), true);
        stored.setString(QStringLiteral("polishPrompt"), QStringLiteral("Keep it short."));
        stored.setString(QStringLiteral("translationLanguageCode"), QStringLiteral("de"));
        stored.setString(QStringLiteral("transcriptionMode"), QStringLiteral("fast"));
    }
    server.setReply("/v1/audio/transcriptions",
                    FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(QStringLiteral("um hello acme"))));
    server.enqueueReply("/v1/chat/completions",
                        FakeOpenAIServer::json(200, FakeOpenAIServer::chatBody(QStringLiteral("Hello Acme Corp."))));
    server.enqueueReply("/v1/chat/completions",
                        FakeOpenAIServer::json(200, FakeOpenAIServer::chatBody(
                                                        QStringLiteral("Hallo Acme Corp. Let me know if you'd like any changes."))));

    const Run result = run({recording, QStringLiteral("--language"), QStringLiteral("en"), QStringLiteral("--mode"),
                            QStringLiteral("moreAccurate")});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("Hallo Acme Corp.\n"));
    ASSERT_EQ(server.requests().size(), 3);

    const QByteArray upload = server.requests()[0].body;
    EXPECT_TRUE(upload.contains("gpt-4o-transcribe"));
    EXPECT_TRUE(upload.contains("name=\"language\"\r\n\r\nen\r\n"));
    const auto guidance = customDictionaryGuidance(entries);
    if (const auto prompt = transcriptionPrompt(guidance)) {
        EXPECT_TRUE(upload.contains("name=\"prompt\"\r\n\r\n" + prompt->toUtf8() + "\r\n"));
    } else {
        EXPECT_FALSE(upload.contains("name=\"prompt\""));
    }

    const QJsonArray polish = messagesOf(server.requests()[1]);
    EXPECT_EQ(polish[0][u"content"].toString(),
              OpenAIClient::polishInstructions(guidance, QStringLiteral("Keep it short.")));
    EXPECT_EQ(polish[1][u"content"].toString(), QStringLiteral("um hello acme"));
    const QJsonArray translation = messagesOf(server.requests()[2]);
    EXPECT_TRUE(translation[0][u"content"].toString().startsWith(
        QStringLiteral("Translate dictated speech into natural German (de).")));
    EXPECT_EQ(translation[1][u"content"].toString(), QStringLiteral("Hello Acme Corp."));
}

TEST_F(TranscribeCommandTest, optionsOverrideThePreferences)
{
    {
        PreferencesStore stored = preferences();
        stored.setBool(QStringLiteral("shouldPolishTranscript"), true);
        stored.setString(QStringLiteral("translationLanguageCode"), QStringLiteral("de"));
    }
    // Translating English speech into English is no translation at all.
    Run result = run({recording, QStringLiteral("--no-polish"), QStringLiteral("--language"), QStringLiteral("en"),
                      QStringLiteral("--translate-to"), QStringLiteral("EN")});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("Hello from the fake server.\n"));
    EXPECT_EQ(server.requests().size(), 1);

    result = run({recording, QStringLiteral("--translate-to"), QStringLiteral("fr")});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    ASSERT_EQ(server.requests().size(), 4);
    EXPECT_TRUE(messagesOf(server.requests()[3])[0][u"content"].toString().contains(QStringLiteral("French (fr)")));
}

TEST_F(TranscribeCommandTest, theEnvironmentsAddressWinsOverThePreference)
{
    FakeOpenAIServer other;
    other.setReply("/openai/v1/audio/transcriptions",
                   FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(QStringLiteral("From the other."))));
    preferences().setString(QStringLiteral("apiBaseURL"), other.baseURL().toString() + QStringLiteral("/openai"));
    EXPECT_EQ(run({recording}).out, QStringLiteral("Hello from the fake server.\n"));
    environment.remove(QStringLiteral("QUORLA_API_BASE_URL"));
    EXPECT_EQ(run({recording}).out, QStringLiteral("From the other.\n"));
    EXPECT_EQ(server.requests().size(), 1);
    EXPECT_EQ(other.requests().size(), 1);
}

TEST_F(TranscribeCommandTest, failuresGoToStandardErrorWithTheWindowsMessages)
{
    server.setReply("/v1/audio/transcriptions",
                    FakeOpenAIServer::json(401, R"({"error":{"message":"Incorrect API key provided: sk-cli."}})"));
    Run result = run({recording});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QString());
    EXPECT_EQ(result.err, QStringLiteral("Incorrect API key provided: sk-cli.\n"));

    server.setReply("/v1/audio/transcriptions", FakeOpenAIServer::json(200, R"({"text":" "})"));
    result = run({recording});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, QStringLiteral("OpenAI returned an empty transcription.\n"));

    const qsizetype sent = server.requests().size();
    result = run({home.filePath(QStringLiteral("missing.m4a"))});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(QStringLiteral("missing.m4a"))) << result.err.toStdString();

    environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), QStringLiteral("http://speech.example.com"));
    result = run({recording});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(QStringLiteral("doesn't use HTTPS"))) << result.err.toStdString();
    EXPECT_EQ(server.requests().size(), sent);
}

TEST_F(TranscribeCommandTest, wrongCommandLinesExplainThemselves)
{
    const QList<QStringList> cases{
        {},
        {recording, recording},
        {recording, QStringLiteral("--mode"), QStringLiteral("slow")},
        {recording, QStringLiteral("--polish"), QStringLiteral("--no-polish")},
        {recording, QStringLiteral("--translate-to"), QStringLiteral("xx")},
        {recording, QStringLiteral("--bogus")},
    };
    for (const QStringList &arguments : cases) {
        const Run result = run(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(u' ').toStdString();
        EXPECT_TRUE(result.err.contains(QStringLiteral("quorla transcribe --help")));
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(run({QStringLiteral("--help")}).exitCode, 0);
}

TEST_F(TranscribeCommandTest, withoutAKeyNothingIsSent)
{
    environment.remove(QStringLiteral("OPENAI_API_KEY"));
    // No credential store reachable either.
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=") + home.filePath(QStringLiteral("no-bus")));
    const Run result = run({recording});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_FALSE(result.err.trimmed().isEmpty());
    EXPECT_TRUE(server.requests().isEmpty());
}

} // namespace
