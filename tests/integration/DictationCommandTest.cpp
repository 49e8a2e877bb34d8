// `quorla dictation …` against the built quorla on the headless desktop: speech played
// into the virtual microphone, the fake server in place of the service, the key in the
// session's keyring and a GTK entry to type into.
#include "FakeOpenAIServer.h"
#include "TextTarget.h"

#include "platform/linux/X11Workspace.h"

#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Outcome {
    int exitCode = -1;
    QString out, err;
};

Outcome run(const QString &program, const QStringList &arguments, const QByteArray &input = {},
            const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        process.kill();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

const QStringList keyItem = {QStringLiteral("service"), QStringLiteral("app.quorla.Quorla"), QStringLiteral("account"),
                             QStringLiteral("openai-api-key")};

class DictationCommandTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("PULSE_SERVER"))
            GTEST_SKIP() << "needs the headless desktop";
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), server.baseURL().toString());
        ASSERT_EQ(run(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), speech, QStringLiteral("hello world")}).exitCode, 0);
    }
    void TearDown() override
    {
        quorla.terminate();
        if (!quorla.waitForFinished(5000))
            quorla.kill();
        run(QStringLiteral("secret-tool"), QStringList{QStringLiteral("clear")} + keyItem);
    }

    Outcome dictation(const QString &command)
    {
        return run(QStringLiteral(QUORLA_BINARY), {QStringLiteral("dictation"), command}, {}, environment);
    }
    bool stateBecomes(const QString &state)
    {
        return waitUntil([&] { return dictation(QStringLiteral("status")).out.trimmed() == state; }, 20000);
    }
    // One dictation through the commands; the entry then holds the transcript.
    void dictate(const QString &begin, const QString &end, const QString &transcript)
    {
        server.setReply("/v1/audio/transcriptions", FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(transcript)));
        EXPECT_EQ(dictation(begin).exitCode, 0);
        ASSERT_TRUE(stateBecomes(QStringLiteral("recording")));
        EXPECT_EQ(run(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), speech}).exitCode, 0);
        EXPECT_EQ(dictation(end).exitCode, 0);
        EXPECT_TRUE(waitUntil([&] { return fileContents(field).endsWith(transcript.toUtf8()); }, 30000))
            << fileContents(field).toStdString();
        EXPECT_TRUE(stateBecomes(QStringLiteral("idle")));
    }

    QTemporaryDir home;
    QString speech = home.filePath(QStringLiteral("speech.wav"));
    QString field = home.filePath(QStringLiteral("field.txt"));
    FakeOpenAIServer server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QProcess quorla;
};

TEST_F(DictationCommandTest, startStopToggleAndCancelDictateIntoTheFocusedField)
{
    const Outcome alone = dictation(QStringLiteral("start"));
    EXPECT_EQ(alone.exitCode, 1);
    EXPECT_EQ(alone.err.trimmed(), QStringLiteral("Quorla is not running. Start it with `quorla`."));

    ASSERT_EQ(run(QStringLiteral("secret-tool"), QStringList{QStringLiteral("store"), QStringLiteral("--label=Quorla")} + keyItem,
                  "sk-command").exitCode, 0);
    quorla.setProcessEnvironment(environment);
    quorla.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    quorla.start(QStringLiteral(QUORLA_BINARY), {});
    ASSERT_TRUE(stateBecomes(QStringLiteral("idle")));
    // Quorla's window first, so that it does not take the focus from the entry afterwards.
    ASSERT_TRUE(waitUntil([] {
        return !run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                QStringLiteral("--name"), QStringLiteral("^Quorla$")})
                    .out.isEmpty();
    }, 20000));
    X11Workspace workspace;
    TextTarget entry(workspace, QStringLiteral("/usr/bin/python3"), {QStringLiteral(QUORLA_GTK_TARGET), field, QString()});
    ASSERT_TRUE(entry.application());

    dictate(QStringLiteral("start"), QStringLiteral("stop"), QStringLiteral("Held by a command."));
    dictate(QStringLiteral("toggle"), QStringLiteral("toggle"), QStringLiteral("Toggled twice."));
    ASSERT_EQ(server.requests().size(), 2);
    EXPECT_EQ(server.requests().at(0).headers.value("authorization"), "Bearer sk-command");

    EXPECT_EQ(dictation(QStringLiteral("start")).exitCode, 0);
    ASSERT_TRUE(stateBecomes(QStringLiteral("recording")));
    EXPECT_EQ(dictation(QStringLiteral("cancel")).exitCode, 0);
    EXPECT_TRUE(stateBecomes(QStringLiteral("idle")));
    EXPECT_EQ(server.requests().size(), 2) << "a canceled recording is never sent";
}

} // namespace
