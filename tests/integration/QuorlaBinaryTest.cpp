// The built quorla as a user runs it on the headless desktop: its own preferences, the
// fake server in place of the service, speech played into the virtual microphone.
#include "AppInfo.h"
#include "FakeOpenAIServer.h"
#include "FakeRealtimeServer.h"
#include "LockedCollection.h"
#include "QtPrinters.h"
#include "TextTarget.h"
#include "XTestKeyboard.h"

#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "platform/linux/X11Workspace.h"
#include "services/LiveTranscription.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Server = FakeOpenAIServer;
using Outcome = std::tuple<int, QString, QString>; // exit status, standard output, standard error

Outcome run(const QString &program, const QStringList &arguments,
            const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(), const QString &folder = {})
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    QSignalSpy finished(&process, &QProcess::finished);
    process.start(program, arguments);
    finished.wait(60000); // the event loop runs meanwhile, so the in-process fake server answers
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

QStringList visibleMainWindows()
{
    return std::get<1>(run("xdotool", {"search", "--onlyvisible", "--name", "^Quorla$"})).split('\n', Qt::SkipEmptyParts);
}

class QuorlaBinary : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("PULSE_SERVER"))
            GTEST_SKIP() << "needs the headless desktop";
        environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
        environment.insert("QUORLA_API_BASE_URL", server.baseURL().toString());
        environment.insert("QT_QPA_PLATFORM", "xcb");
    }
    void TearDown() override
    {
        resident.kill();
        resident.waitForFinished(5000);
        QCoro::waitFor(keyring.remove(QUORLA_APP_ID, "openai-api-key"));
    }

    // The speech to play, the key in the keyring, and the resident Quorla started.
    void startQuorla(const char *apiKey, const QStringList &arguments)
    {
        ASSERT_EQ(std::get<0>(run("espeak-ng", {"-w", home.filePath("speech.wav"), "hello world"})), 0);
        ASSERT_EQ(QCoro::waitFor(keyring.add(QUORLA_APP_ID, "openai-api-key", apiKey)).outcome, CredentialStore::Outcome::success);
        resident.setProcessEnvironment(environment);
        resident.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        resident.start(QUORLA_BINARY, arguments);
    }
    Outcome quorla(const QStringList &arguments) { return run(QUORLA_BINARY, arguments, environment, home.path()); }
    QString dictationState() { return std::get<1>(quorla({"dictation", "status"})).trimmed(); }
    bool mainWindowShows(bool visible)
    {
        return waitUntil([&] { return visibleMainWindows().isEmpty() != visible; }, 15000);
    }
    void keysToMainWindow(const QString &keys)
    {
        run("xdotool", {"windowactivate", "--sync", visibleMainWindows().value(0), "key", "--clearmodifiers", "Escape", keys});
    }

    QTemporaryDir home;
    Server server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    SecretServiceCredentialStore keyring;
    QProcess resident;
};

// Commands reach the running Quorla, whose text lands in the focused GTK entry; closing the
// window keeps Quorla running, a second launch brings the window back, Quit ends it. Then
// the doctor and transcribe commands, which need no running Quorla.
TEST_F(QuorlaBinary, dictationCommandsTheAppsLifeDoctorAndTranscribe)
{
    EXPECT_EQ(quorla({"dictation", "start"}),
              Outcome(1, QString(), "Quorla is not running. Start it with `quorla`.\n"));
    ASSERT_NO_FATAL_FAILURE(startQuorla("sk-command", {}));
    // Quorla's window first, so that it does not take the focus from the entry afterwards.
    ASSERT_TRUE(mainWindowShows(true));
    ASSERT_TRUE(waitUntil([&] { return dictationState() == "idle"; }, 20000));
    const QString field = home.filePath("field.txt");
    {
        X11Workspace workspace;
        TextTarget entry(workspace, "/usr/bin/python3", {QUORLA_GTK_TARGET, field, QString()});
        ASSERT_TRUE(entry.application());
        // Held with start and stop, then toggled on and off.
        for (const auto &[on, off] : {std::pair("start", "stop"), std::pair("toggle", "toggle")}) {
            const QString text = QStringLiteral("Dictated with %1 and %2.").arg(on, off);
            server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody(text)));
            EXPECT_EQ(std::get<0>(quorla({"dictation", on})), 0);
            ASSERT_TRUE(waitUntil([&] { return dictationState() == "recording"; }, 20000));
            EXPECT_EQ(std::get<0>(run("paplay", {"-d", "vsink", home.filePath("speech.wav")})), 0);
            EXPECT_EQ(std::get<0>(quorla({"dictation", off})), 0);
            EXPECT_TRUE(waitUntil([&] { return fileContents(field).endsWith(text.toUtf8()); }, 30000))
                << fileContents(field).toStdString();
            EXPECT_TRUE(waitUntil([&] { return dictationState() == "idle"; }, 20000));
        }
        ASSERT_EQ(server.requests().size(), 2);
        EXPECT_EQ(server.requests().at(0).headers.value("authorization"), "Bearer sk-command");

        EXPECT_EQ(std::get<0>(quorla({"dictation", "start"})), 0);
        ASSERT_TRUE(waitUntil([&] { return dictationState() == "recording"; }, 20000));
        EXPECT_EQ(std::get<0>(run("paplay", {"-d", "vsink", home.filePath("speech.wav")})), 0); // worth sending
        EXPECT_EQ(std::get<0>(quorla({"dictation", "cancel"})), 0);
        EXPECT_TRUE(waitUntil([&] { return dictationState() == "idle"; }, 20000));
        EXPECT_EQ(server.requests().size(), 2) << "a canceled recording is never sent";
    }

    // Closed with the window menu's shortcut, once Escape has put any sheet away. Keys again
    // until they land, as a window may take the focus after the keys went; what counts is the
    // outcome, which may come while xdotool still runs.
    const auto keysUntil = [&](const QString &keys, const std::function<bool()> &done) {
        return waitUntil([&] { return done() || (keysToMainWindow(keys), waitUntil(done, 1000)); }, 20000);
    };
    ASSERT_TRUE(keysUntil("ctrl+w", [] { return visibleMainWindows().isEmpty(); }));
    EXPECT_FALSE(resident.waitForFinished(500));
    EXPECT_EQ(std::get<0>(quorla({})), 0) << "a second quorla hands over to the first";
    ASSERT_TRUE(mainWindowShows(true));
    ASSERT_TRUE(keysUntil("ctrl+q", [&] { return resident.state() == QProcess::NotRunning; }));
    EXPECT_EQ(resident.exitCode(), 0);

    // The doctor finds all well, and then a locked keyring and no audio server.
    run("dbus-send", {"--session", "--dest=org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set",
                      "string:org.a11y.Status", "string:IsEnabled", "variant:boolean:true"});
    server.setReply("/v1/models", Server::json(200, R"({"data": []})"));
    // Something for the virtual microphone to hear while the doctor listens.
    const QString tonePath = home.filePath("tone.wav");
    run("sox", QStringLiteral("-n -r 48000 -c 2 %1 synth 20 sine 440 vol 0.3").arg(tonePath).split(u' '));
    QProcess tone;
    tone.start("paplay", {"-d", "vsink", tonePath});
    const auto [status, output, errors] = quorla({"doctor", "--json"});
    tone.kill();
    tone.waitForFinished();
    EXPECT_EQ(status, 0) << output.toStdString();
    for (const QJsonValue &check : QJsonDocument::fromJson(output.toUtf8())[u"checks"].toArray())
        EXPECT_EQ(check[u"status"].toString(), "ok") << check[u"what"].toString().toStdString();
    EXPECT_EQ(server.requests().last().headers.value("authorization"), "Bearer sk-command");

    const LockedCollection locked;
    ASSERT_TRUE(locked.isLocked);
    // A runtime folder of its own, where no audio server runs: the desktop's stays up.
    environment.insert("XDG_RUNTIME_DIR", home.path());
    environment.insert("PULSE_SERVER", "unix:" + home.filePath("native"));
    const auto [failed, report, _] = quorla({"doctor"});
    EXPECT_EQ(failed, 1);
    for (const char *line : {"fail  No audio server is reachable  \u2014 Start PipeWire",
                             "fail  The keyring's default collection is locked  \u2014 Unlock your keyring"})
        EXPECT_TRUE(report.contains(QString::fromUtf8(line))) << report.toStdString();

    // Transcribing takes the key from the environment, with no keyring and no display.
    environment.insert("OPENAI_API_KEY", " sk-cli \n");
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home.filePath("no-bus"));
    environment.remove("DISPLAY");
    QFile file(home.filePath("dictation.m4a"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(41 * 1024, 'B')) > 0);
    file.close();
    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("Hello there.")));
    EXPECT_EQ(quorla({"transcribe", "dictation.m4a", "--language", "en"}), Outcome(0, "Hello there.\n", QString()));
    EXPECT_EQ(server.requests().last().headers.value("authorization"), "Bearer sk-cli");
    EXPECT_TRUE(server.requests().last().body.contains("name=\"language\"\r\n\r\nen\r\n"));

    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("Would you like any changes?")));
    EXPECT_EQ(quorla({"transcribe", "dictation.m4a"}), Outcome(1, QString(), "OpenAI returned an empty transcription.\n"));
}

// In a sway session: the trigger held through sway's bindings, the text typed into a native GTK entry.
TEST_F(QuorlaBinary, dictatesIntoANativeWaylandFieldWhileTheTriggerIsHeld)
{
    const QString display = qEnvironmentVariable("QUORLA_TEST_WAYLAND_DISPLAY");
    if (display.isEmpty())
        GTEST_SKIP() << "no headless sway (QUORLA_TEST_WAYLAND_DISPLAY)";
    environment.remove("DISPLAY");
    for (const auto &[name, value] : {std::pair("WAYLAND_DISPLAY", display), {"SWAYSOCK", qEnvironmentVariable("QUORLA_TEST_SWAYSOCK")}, {"XDG_SESSION_TYPE", "wayland"}, {"QT_QPA_PLATFORM", "wayland"}, {"GDK_BACKEND", "wayland"}})
        environment.insert(name, value);
    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("Dictated in sway.")));
    ASSERT_NO_FATAL_FAILURE(startQuorla("sk-sway", {"--background"}));
    ASSERT_TRUE(waitUntil([&] { return dictationState() == "idle"; }, 20000));

    AtSpiWorkspace workspace{nullptr};
    const QString field = home.filePath("field.txt");
    TextTarget entry(workspace, "/usr/bin/python3", {QUORLA_GTK_TARGET, field, QString()}, environment);
    ASSERT_TRUE(entry.application());
    QProcess hand; // the trigger held once, while the speech plays
    hand.setProcessEnvironment(environment);
    hand.start("wtype", {"-P", "Control_R", "-s", "8000", "-p", "Control_R"});
    ASSERT_TRUE(waitUntil([&] { return dictationState() == "recording"; }, 7000));
    EXPECT_EQ(std::get<0>(run("paplay", {"-d", "vsink", home.filePath("speech.wav")})), 0);
    EXPECT_TRUE(waitUntil([&] { return fileContents(field) == "Dictated in sway." && dictationState() == "idle"; }, 30000)) << fileContents(field).toStdString();

    // The trigger with another key is that key's shortcut: the hold is dropped, nothing stays held.
    run("wtype", {"-P", "Control_R", "-s", "600", "-k", "a", "-s", "300", "-p", "Control_R"}, environment);
    EXPECT_TRUE(waitUntil([&] { return fileContents(field) == "Dictated in sway.a" && dictationState() == "idle"; }, 5000));
    EXPECT_EQ(server.requests().size(), 1);

    // Ended by the session (SIGTERM), Quorla takes its key bindings with it.
    resident.terminate();
    EXPECT_TRUE(resident.waitForFinished(10000) && resident.exitStatus() == QProcess::NormalExit);
    EXPECT_NE(std::get<0>(run("swaymsg", {"-s", environment.value("SWAYSOCK"), "unbindsym --release Control_R"})), 0);
}

// Live: while the trigger is held the speech streams to the realtime endpoint, whose text lands;
// when the stream fails midway, the recording is uploaded instead and its text lands.
TEST_F(QuorlaBinary, dictatesLiveWhileTheTriggerIsHeldAndUploadsWhenTheStreamFails)
{
    FakeRealtimeServer realtime;
    realtime.serveAlongside(server);
    PreferencesStore(home.filePath("config/Quorla/preferences.json")).setString(PreferenceKeys::transcriptionMode, "live");
    server.setReply("/v1/audio/transcriptions", Server::json(200, Server::transcriptionBody("Uploaded instead.")));
    ASSERT_NO_FATAL_FAILURE(startQuorla("sk-live", {"--background"}));
    ASSERT_TRUE(waitUntil([&] { return dictationState() == "idle"; }, 20000));

    X11Workspace workspace;
    const QString field = home.filePath("field.txt");
    TextTarget entry(workspace, "/usr/bin/python3", {QUORLA_GTK_TARGET, field, QString()});
    ASSERT_TRUE(entry.application());
    XTestKeyboard hand;
    for (const auto &[fault, text] : {std::pair(FakeRealtimeServer::Fault::errorEvent, QString("Uploaded instead.")), {FakeRealtimeServer::Fault::none, realtime.finalText}}) {
        realtime.fault = fault;
        hand.press("Control_R"); // released whatever happens: a key left down would spoil the tests after
        EXPECT_TRUE(waitUntil([&] { return dictationState() == "recording"; }, 7000));
        EXPECT_EQ(std::get<0>(run("paplay", {"-d", "vsink", home.filePath("speech.wav")})), 0);
        hand.release("Control_R");
        EXPECT_TRUE(waitUntil([&] { return fileContents(field).endsWith(text.toUtf8()) && dictationState() == "idle"; }, 30000))
            << fileContents(field).toStdString();
    }
    EXPECT_EQ(server.requests().size(), 1) << "only the failed stream's recording is uploaded";
    EXPECT_EQ(realtime.authorization, "Bearer sk-live");
    EXPECT_EQ(realtime.configuration.value("audio")[u"input"][u"transcription"][u"model"].toString(), "gpt-4o-mini-transcribe");
    EXPECT_GT(realtime.receivedSamples, LiveTranscription::sampleRate / 2) << "the speech streamed";
}

} // namespace
