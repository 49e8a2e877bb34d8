#include "AppInfo.h"
#include "FakeOpenAIServer.h"
#include "LockedCollection.h"
#include "platform/linux/SecretServiceCredentialStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// `quorla doctor` as built, on the test desktop with its own preferences and the fake
// service in place of OpenAI.
struct DoctorRun {
    QTemporaryDir home;
    FakeOpenAIServer server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

    DoctorRun()
    {
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("QUORLA_API_BASE_URL"), server.baseURL().toString());
        server.setReply("/v1/models", FakeOpenAIServer::json(200, R"({"data": []})"));
    }
    std::pair<int, QByteArray> run(const QStringList &options)
    {
        QProcess quorla;
        quorla.setProcessEnvironment(environment);
        QSignalSpy finished(&quorla, &QProcess::finished);
        quorla.start(QStringLiteral(QUORLA_BINARY), QStringList{QStringLiteral("doctor")} + options);
        finished.wait(60000); // a hung doctor fails here and is killed with its QProcess
        return {quorla.exitCode(), quorla.readAllStandardOutput()};
    }
};

TEST(DoctorCommandTest, everythingIsWellOnTheTestDesktop)
{
    SecretServiceCredentialStore keyring;
    ASSERT_EQ(keyring.add(QStringLiteral(QUORLA_APP_ID), QStringLiteral("openai-api-key"), "sk-doctor").outcome,
              CredentialStore::Outcome::success);
    const auto forget = qScopeGuard([&] { keyring.remove(QStringLiteral(QUORLA_APP_ID), QStringLiteral("openai-api-key")); });
    QProcess::execute(QStringLiteral("dbus-send"), {QStringLiteral("--session"), QStringLiteral("--dest=org.a11y.Bus"),
        QStringLiteral("/org/a11y/bus"), QStringLiteral("org.freedesktop.DBus.Properties.Set"),
        QStringLiteral("string:org.a11y.Status"), QStringLiteral("string:IsEnabled"), QStringLiteral("variant:boolean:true")});
    // Something for the virtual microphone to hear while the doctor listens.
    DoctorRun doctor;
    const QString tonePath = doctor.home.filePath(QStringLiteral("tone.wav"));
    QProcess::execute(QStringLiteral("sox"),
                      QStringLiteral("-n -r 48000 -c 2 %1 synth 20 sine 440 vol 0.3").arg(tonePath).split(u' '));
    QProcess tone;
    tone.start(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), tonePath});
    const auto silence = qScopeGuard([&] { tone.kill(); tone.waitForFinished(); });
    const auto [status, output] = doctor.run({QStringLiteral("--json")});
    const QJsonObject report = QJsonDocument::fromJson(output).object();
    EXPECT_EQ(status, 0) << output.toStdString();
    for (const QJsonValue &check : report[u"checks"].toArray())
        EXPECT_EQ(check[u"status"].toString(), QStringLiteral("ok")) << check[u"what"].toString().toStdString();
    EXPECT_EQ(doctor.server.requests().value(0).headers.value("authorization"), "Bearer sk-doctor");
}

TEST(DoctorCommandTest, aLockedKeyringAndNoAudioServerFailWithTheirFixes)
{
    const LockedCollection locked;
    ASSERT_TRUE(locked.isLocked);
    DoctorRun doctor;
    // A runtime folder of its own, where no audio server runs: the desktop's stays up.
    doctor.environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), doctor.home.path());
    doctor.environment.insert(QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:") + doctor.home.filePath(QStringLiteral("native")));
    const auto [status, output] = doctor.run({});
    EXPECT_EQ(status, 1);
    for (const char *line : {"fail  No audio server is reachable  \u2014 Start PipeWire",
                             "fail  The keyring's default collection is locked  \u2014 Unlock your keyring"})
        EXPECT_TRUE(QString::fromUtf8(output).contains(QString::fromUtf8(line))) << output.toStdString();
}

} // namespace
