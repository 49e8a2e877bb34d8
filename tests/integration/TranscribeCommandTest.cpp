#include "FakeOpenAIServer.h"

#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Server = FakeOpenAIServer;

// `quorla transcribe` as a user runs it: the built binary in a folder holding
// dictation.m4a, its own preferences, the key from the environment and no keyring,
// the fake server in place of the service.
class TranscribeCommandTest : public ::testing::Test
{
protected:
    TranscribeCommandTest()
    {
        QFile file(home.filePath("dictation.m4a"));
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(41 * 1024, '\x42'));
        environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
        environment.insert("QUORLA_API_BASE_URL", server.baseURL().toString());
        environment.insert("OPENAI_API_KEY", " sk-cli \n");
        environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home.filePath("no-bus"));
        environment.remove("DISPLAY");
    }

    // Exit status, standard output and standard error of `quorla transcribe ARGUMENTS`.
    std::tuple<int, QString, QString> run(const QString &arguments)
    {
        QProcess quorla;
        quorla.setProcessEnvironment(environment);
        quorla.setWorkingDirectory(home.path());
        QSignalSpy finished(&quorla, &QProcess::finished);
        quorla.start(QUORLA_BINARY, QStringList{"transcribe"} + arguments.split(u' ', Qt::SkipEmptyParts));
        finished.wait(60000); // the event loop runs meanwhile, so the in-process fake server answers
        return {quorla.exitStatus() == QProcess::NormalExit ? quorla.exitCode() : -1,
                QString::fromUtf8(quorla.readAllStandardOutput()), QString::fromUtf8(quorla.readAllStandardError())};
    }
    // The instructions of one chat request the fake server received.
    QString instructions(qsizetype request) const
    {
        return QJsonDocument::fromJson(server.requests().value(request).body)[u"messages"][0][u"content"].toString();
    }

    QTemporaryDir home;
    Server server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

// The stored settings, with the options in their place; --language is the speech language.
TEST_F(TranscribeCommandTest, sendsTheDictationStepsWithTheStoredSettingsAndTheOptions)
{
    PreferencesStore stored(home.filePath("config/Quorla/preferences.json"));
    stored.setData(PreferenceKeys::customDictionaryEntries, R"([{"term":"Acme Corp"},{"term":"open eye","replacement":"OpenAI"}])");
    stored.setBool(PreferenceKeys::shouldPolishTranscript, true);
    stored.setString(PreferenceKeys::polishPrompt, "Keep it short.");
    stored.setString(PreferenceKeys::translationLanguageCode, "fr");
    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("um hello acme")));
    for (const char *reply : {"Hello Acme Corp.", "Hallo Acme Corp. Let me know if you'd like any changes."})
        server.enqueueReply("/v1/chat/completions", Server::json(200, Server::chatBody(QString::fromUtf8(reply))));

    EXPECT_EQ(run("dictation.m4a --language en --translate-to de --mode moreAccurate"),
              std::make_tuple(0, QString("Hallo Acme Corp.\n"), QString()));
    ASSERT_EQ(server.requests().size(), 3);
    const QByteArray upload = server.requests()[0].body;
    EXPECT_TRUE(upload.contains("gpt-4o-transcribe") && upload.contains("name=\"language\"\r\n\r\nen\r\n"));
    EXPECT_TRUE(upload.contains("- Acme Corp") && upload.contains("- open eye -> OpenAI"));
    EXPECT_TRUE(instructions(1).contains("Keep it short.") && instructions(1).contains("- open eye -> OpenAI"));
    EXPECT_EQ(instructions(2).split("\n\n").last(), "The original speech language is likely English (en).");
    EXPECT_TRUE(instructions(2).startsWith("Translate dictated speech into natural German (de)."));
}

// Failures go to standard error with exit status 1, a reply with nothing left in it too.
TEST_F(TranscribeCommandTest, failuresExplainThemselvesOnStandardError)
{
    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("Would you like any changes?")));
    EXPECT_EQ(run("dictation.m4a"), std::make_tuple(1, QString(), QString("OpenAI returned an empty transcription.\n")));
    server.setReply("/v1/audio/transcriptions", Server::json(401, R"({"error":{"message":"Incorrect API key provided."}})"));
    EXPECT_EQ(run("dictation.m4a"), std::make_tuple(1, QString(), QString("Incorrect API key provided.\n")));
}

} // namespace
