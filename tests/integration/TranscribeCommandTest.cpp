#include "FakeOpenAIServer.h"

#include "stores/PreferencesStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Server = FakeOpenAIServer;

// `quorla transcribe` as a user runs it: the built binary in a folder holding
// dictation.m4a, its own preferences, the key from the environment, the fake server
// in place of the service.
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
        QFile file(home.filePath(QStringLiteral("dictation.m4a")));
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(41 * 1024, '\x42'));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), server.baseURL().toString());
        environment.insert(QStringLiteral("OPENAI_API_KEY"), QStringLiteral(" sk-cli \n"));
        // No keyring either: without that variable there is no key at all.
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=") + home.filePath(QStringLiteral("no-bus")));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    }

    PreferencesStore preferences() const
    {
        return PreferencesStore(home.filePath(QStringLiteral("config/Quorla/preferences.json")));
    }

    // The arguments after "quorla transcribe", split at spaces.
    Run run(const QString &arguments)
    {
        QProcess quorla;
        quorla.setProcessEnvironment(environment);
        quorla.setWorkingDirectory(home.path());
        QSignalSpy finished(&quorla, &QProcess::finished);
        quorla.start(QStringLiteral(QUORLA_BINARY),
                     QStringList{QStringLiteral("transcribe")} + arguments.split(u' ', Qt::SkipEmptyParts));
        // The event loop runs meanwhile, so the in-process fake server answers.
        if (!finished.wait(60000))
            quorla.kill();
        return {quorla.exitStatus() == QProcess::NormalExit ? quorla.exitCode() : -1,
                QString::fromUtf8(quorla.readAllStandardOutput()), QString::fromUtf8(quorla.readAllStandardError())};
    }

    // The content of one chat message the fake server received.
    QString message(qsizetype request, int index) const
    {
        const QJsonObject body = QJsonDocument::fromJson(server.requests().value(request).body).object();
        return body[u"messages"][index][u"content"].toString();
    }

    void transcribeAs(const QString &text)
    {
        server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody(text)));
    }

    QTemporaryDir home;
    Server server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

TEST_F(TranscribeCommandTest, printsTheTranscriptOfAPlainRun)
{
    transcribeAs(QStringLiteral(" Grüße aus Köln. "));
    const Run result = run(QStringLiteral("dictation.m4a"));
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
    {
        PreferencesStore stored = preferences();
        stored.setData(QStringLiteral("customDictionaryEntries"),
                       R"([{"term":"Acme Corp"},{"term":"open eye","replacement":"OpenAI"}])");
        stored.setBool(QStringLiteral("shouldPolishTranscript"), true);
        stored.setString(QStringLiteral("polishPrompt"), QStringLiteral("Keep it short."));
        stored.setString(QStringLiteral("translationLanguageCode"), QStringLiteral("de"));
        stored.setString(QStringLiteral("transcriptionMode"), QStringLiteral("fast"));
    }
    transcribeAs(QStringLiteral("um hello acme"));
    for (const char *reply : {"Hello Acme Corp.", "Hallo Acme Corp. Let me know if you'd like any changes."})
        server.enqueueReply("/v1/chat/completions", Server::json(200, Server::chatBody(QString::fromUtf8(reply))));

    const Run result = run(QStringLiteral("dictation.m4a --language en --mode moreAccurate"));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("Hallo Acme Corp.\n"));
    ASSERT_EQ(server.requests().size(), 3);

    const QByteArray upload = server.requests()[0].body;
    EXPECT_TRUE(upload.contains("gpt-4o-transcribe"));
    EXPECT_TRUE(upload.contains("name=\"language\"\r\n\r\nen\r\n"));
    const QByteArray prompt = upload.mid(upload.indexOf("name=\"prompt\""));
    EXPECT_TRUE(prompt.contains("Acme Corp") && prompt.contains("OpenAI"));

    const QString polish = message(1, 0);
    EXPECT_TRUE(polish.contains(u"Keep it short.") && polish.contains(u"OpenAI")) << polish.toStdString();
    EXPECT_EQ(message(1, 1), QStringLiteral("um hello acme"));
    EXPECT_TRUE(message(2, 0).startsWith(QStringLiteral("Translate dictated speech into natural German (de).")));
    EXPECT_EQ(message(2, 1), QStringLiteral("Hello Acme Corp."));
}

TEST_F(TranscribeCommandTest, optionsAndTheEnvironmentOverrideThePreferences)
{
    Server other;
    other.setReply("/openai/v1/audio/transcriptions",
                   Server::json(200, Server::transcriptionBody(QStringLiteral("Other."))));
    {
        PreferencesStore stored = preferences();
        stored.setBool(QStringLiteral("shouldPolishTranscript"), true);
        stored.setString(QStringLiteral("translationLanguageCode"), QStringLiteral("de"));
        stored.setString(QStringLiteral("apiBaseURL"), other.baseURL().toString() + QStringLiteral("/openai"));
    }
    // Translating English speech into English is no translation at all.
    const QString englishAsItIs = QStringLiteral("dictation.m4a --no-polish --language en --translate-to EN");
    Run result = run(englishAsItIs);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("Hello from the fake server.\n"));
    EXPECT_EQ(server.requests().size(), 1);

    result = run(QStringLiteral("dictation.m4a --translate-to fr"));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    ASSERT_EQ(server.requests().size(), 4);
    EXPECT_TRUE(message(3, 0).contains(QStringLiteral("French (fr)")));

    environment.remove(QStringLiteral("QUORLA_API_BASE_URL"));
    EXPECT_EQ(run(englishAsItIs).out, QStringLiteral("Other.\n"));
    EXPECT_EQ(other.requests().size(), 1);
    EXPECT_EQ(server.requests().size(), 4);
}

TEST_F(TranscribeCommandTest, failuresGoToStandardErrorAndSendOnlyWhatTheyMust)
{
    const struct {
        const char *name;
        Server::Reply reply;
        const char *arguments;
        std::pair<QString, QString> variable; // an empty value removes it
        QString error;
        int requests;
    } cases[] = {
        {"key refused", Server::json(401, R"({"error":{"message":"Incorrect API key provided: sk-cli."}})"),
         "dictation.m4a", {}, QStringLiteral("Incorrect API key provided: sk-cli.\n"), 1},
        {"empty transcript", Server::json(200, R"({"text":" "})"), "dictation.m4a", {},
         QStringLiteral("OpenAI returned an empty transcription.\n"), 1},
        {"missing file", {}, "missing.m4a", {}, QStringLiteral("missing.m4a"), 0},
        {"plain HTTP", {}, "dictation.m4a",
         {QStringLiteral("QUORLA_API_BASE_URL"), QStringLiteral("http://speech.example.com")},
         QStringLiteral("doesn't use HTTPS"), 0},
        {"no key", {}, "dictation.m4a", {QStringLiteral("OPENAI_API_KEY"), {}}, QString(), 0},
    };
    const QProcessEnvironment base = environment;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        environment = base;
        if (!c.variable.first.isEmpty())
            c.variable.second.isEmpty() ? environment.remove(c.variable.first)
                                        : environment.insert(c.variable.first, c.variable.second);
        server.setReply("/v1/audio/transcriptions", c.reply);
        const qsizetype sent = server.requests().size();
        const Run result = run(QString::fromLatin1(c.arguments));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, QString());
        EXPECT_TRUE(result.err.contains(c.error) && !result.err.trimmed().isEmpty()) << result.err.toStdString();
        EXPECT_EQ(server.requests().size() - sent, c.requests);
    }
}

TEST_F(TranscribeCommandTest, wrongCommandLinesExplainThemselves)
{
    for (const char *arguments : {"", "dictation.m4a dictation.m4a", "dictation.m4a --mode slow",
                                  "dictation.m4a --polish --no-polish", "dictation.m4a --translate-to xx",
                                  "dictation.m4a --bogus"}) {
        const Run result = run(QString::fromLatin1(arguments));
        EXPECT_EQ(result.exitCode, 2) << arguments;
        EXPECT_TRUE(result.err.contains(QStringLiteral("quorla transcribe --help"))) << arguments;
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(run(QStringLiteral("--help")).exitCode, 0);
}

} // namespace
