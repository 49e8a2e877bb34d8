#include "AppInfo.h"
#include "FakeAudioCapture.h"
#include "FakeCredentialStore.h"
#include "FakeDesktopProbe.h"
#include "FakeOpenAIServer.h"
#include "ModelTest.h"
#include "TaskResult.h"
#include "services/Doctor.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>

namespace {

using Status = DoctorCheck::Status;
using Outcome = CredentialStore::Outcome;
using Probe = DesktopProbe;

struct DoctorSetup {
    QTemporaryDir home;
    FakeOpenAIServer server;
    QNetworkAccessManager network;
    std::shared_ptr<FakeDesktopProbe> desktop = std::make_shared<FakeDesktopProbe>();
    std::shared_ptr<FakeCredentialStore> credentials = std::make_shared<FakeCredentialStore>();
    std::shared_ptr<FakeAudioCapture> audio = std::make_shared<FakeAudioCapture>();
    const QString preferencesPath = home.filePath(QStringLiteral("preferences.json"));

    DoctorSetup()
    {
        credentials->items.insert(QStringLiteral(QUORLA_APP_ID "/openai-api-key"), "sk-test");
        server.setReply("/v1/models", FakeOpenAIServer::json(200, R"({"data": []})"));
        writeTestFile(preferencesPath, QStringLiteral(R"({"apiBaseURL": "%1"})").arg(server.baseURL().toString()).toUtf8());
    }
};

TEST(DoctorTest, eachProblemGivesItsRowAndItsFix)
{
    const struct {
        std::function<void(DoctorSetup &)> arrange;
        Status status;
        QString what;
        QString fix;
    } cases[] = {
        {[](auto &) {}, Status::ok, "The service answers and accepts the API key", ""},
        {[](auto &s) { s.desktop->sessionAnswer = {}; }, Status::fail, "No graphical session", "inside your desktop"},
        {[](auto &s) { s.desktop->sessionAnswer = {Probe::SessionType::wayland, {}, {.wayland = true}}; }, Status::warn, "Wayland session; trigger: none", "quorla dictation toggle"},
        {[](auto &s) { s.desktop->sessionAnswer = {Probe::SessionType::wayland, {}, {.wayland = true, .swayIpc = true, .virtualKeyboard = true}}; }, Status::ok, "Wayland (sway) session; trigger: sway key bindings", ""},
        {[](auto &s) { s.desktop->trigger = Probe::TriggerAccess::noTriggerKey; }, Status::fail, "Right Ctrl: this keyboard has no", "Choose another trigger key"},
        {[](auto &s) { s.desktop->bus.enabled = false; }, Status::warn, "Accessibility is switched off", "Grant Access"},
        {[](auto &s) { s.desktop->synthesizesKeys = false; }, Status::warn, "No paste route", "XTEST"},
        {[](auto &s) { s.desktop->audio.reachable = false; }, Status::fail, "No audio server", "pipewire-pulse"},
        {[](auto &s) { s.desktop->audio.defaultInput.clear(); }, Status::fail, "no default input", "Connect a mic"},
        {[](auto &s) { s.audio->peakPower = -160.0f; }, Status::warn, "silent for a second (peak -160 dBFS)", "Unmute"},
        {[](auto &s) { s.audio->startFailure = QuorlaError(QuorlaError::Kind::recordingFailed); }, Status::fail, "Recording from the default input failed", "no other program holds it"},
        {[](auto &s) { s.credentials->collection = {Outcome::interactionNotAllowed, 2}; }, Status::fail, "default collection is locked", "Unlock your keyring"},
        {[](auto &s) { s.credentials->failure = CredentialStore::Result{Outcome::serviceUnavailable, 2}; }, Status::fail, "No Secret Service", "GNOME Keyring, KWallet or KeePassXC"},
        {[](auto &s) { s.credentials->items.clear(); }, Status::fail, "No API key is stored", "save your OpenAI API"},
        {[](auto &s) { s.server.setReply("/v1/models", FakeOpenAIServer::json(401, "{}")); }, Status::fail, "The service refuses the API key (HTTP 401)", "Save a valid key"},
        {[](auto &s) { writeTestFile(s.preferencesPath, R"({"apiBaseURL": "http://example.com"})"); }, Status::fail, "Service http://example.com isn't HTTPS", "http:// only on this computer"},
        {[](auto &s) { writeTestFile(s.preferencesPath, R"({"apiBaseURL": "http://127.0.0.1:1"})"); }, Status::fail, "The service can't be reached", "Check the network connection"},
        {[](auto &s) { QFile(s.preferencesPath + QStringLiteral(".corrupt")).open(QIODevice::WriteOnly); }, Status::warn, "Unreadable preferences were set aside", "Copy what you need"},
    };
    for (const auto &expected : cases) {
        SCOPED_TRACE(expected.what.toStdString());
        DoctorSetup setup;
        expected.arrange(setup);
        Doctor doctor({setup.desktop, setup.credentials, setup.audio}, &setup.network, {setup.preferencesPath, std::chrono::milliseconds(0)});
        const QList<DoctorCheck> checks = waitForResult(doctor.run()).value.value_or(QList<DoctorCheck>());
        const auto row = std::find_if(checks.begin(), checks.end(), [&](auto &c) { return c.what.contains(expected.what); });
        ASSERT_NE(row, checks.end()) << Doctor::text(checks).toStdString();
        EXPECT_EQ(row->status, expected.status);
        EXPECT_TRUE(row->fix.contains(expected.fix)) << row->fix.toStdString();
        EXPECT_EQ(Doctor::dictationCanWork(checks), expected.status != Status::fail) << Doctor::text(checks).toStdString();
        EXPECT_FALSE(Doctor::text(checks).contains(QStringLiteral("sk-test")));
        if (&expected == cases) {
            EXPECT_TRUE(std::all_of(checks.begin(), checks.end(), [](auto &c) { return c.status == Status::ok; }));
            EXPECT_EQ(setup.server.requests().value(0).headers.value("authorization"), "Bearer sk-test");
        }
    }
}

} // namespace
