#include "FakeOpenAIServer.h"
#include "ModelFixture.h"
#include "TaskResult.h"

#include "services/AppUpdateClient.h"

#include <QDesktopServices>
#include <QNetworkAccessManager>
#include <QScopeGuard>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

// Stands in for the browser.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

TEST(AppUpdateClientVersions, partsAreLeadingNumbersAndNewerComparesPartByPart)
{
    const std::pair<QString, QList<int>> parts[] = {
        {"2.10.3-beta", {2, 10, 3}}, {"beta2.1", {0, 1}}, {"1..2.", {1, 2}}, {"99999999999.1", {0, 1}}, {"\u0663.2", {0, 2}}, {"4\U0001D7D9.1", {0, 1}}, // digits other than ASCII are no numbers
    };
    for (const auto &[version, expected] : parts)
        EXPECT_EQ(AppUpdateClient::normalizedVersionParts(version), expected) << version.toStdString();
    const std::tuple<QString, QString, bool> newer[] = {
        {"1.2.0", "1.2", false},
        {"1.2", "1.2.0", false},
        {"1.10", "1.9", true},
        {"1.9", "1.10", false},
        {"2", "1.99.99", true},
        {"beta", QString(), false},
    };
    for (const auto &[candidate, current, expected] : newer)
        EXPECT_EQ(AppUpdateClient::isVersion(candidate, current), expected) << candidate.toStdString();
}

TEST(AppUpdateClient, releaseRepliesGiveAnUpdateOrNone)
{
    FakeOpenAIServer server;
    QNetworkAccessManager network;
    AppUpdateClient client{&network, server.url("/api/app/latest"), std::chrono::milliseconds(500)};
    const QString decoding = "The data couldn't be read because it isn't in the correct format.";
    const struct {
        QByteArray body;
        int status;
        std::optional<AppUpdate> update;
        QString error;
    } cases[] = {
        {"{\"version\":\" 1.3 \\n\",\"downloadUrl\":\"https://quorla.app/dl/1.3\",\"notes\":1}", 200,
         AppUpdate{"1.3", QUrl("https://quorla.app/dl/1.3")}, ""},
        {R"({"version":"1.2.9.0","downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt, ""},
        {R"({"version":"1.3"})", 200, std::nullopt, ""},
        {R"({"version":null,"downloadUrl":null})", 200, std::nullopt, ""},
        {R"({"version":1.3,"downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt, decoding},
        {"<html>", 200, std::nullopt, decoding},
        {"", 304, std::nullopt, "OpenAI returned a response the app couldn't read."},
    };
    for (const auto &c : cases) {
        server.enqueueReply("/api/app/latest", FakeOpenAIServer::json(c.status, c.body));
        const auto result = waitForResult(client.availableUpdate("1.2.9"));
        EXPECT_EQ(result.errorText(), c.error) << c.body.toStdString();
        if (c.error.isEmpty()) {
            EXPECT_EQ(result.value, std::optional<std::optional<AppUpdate>>(c.update)) << c.body.toStdString();
        }
    }
    const auto &request = server.requests().first();
    EXPECT_EQ(request.headers.value("accept"), "application/json");
    EXPECT_FALSE(request.headers.contains("authorization"));
}

// A quiet check keeps the notice and shows no error; the explicit one opens only a newer web download.
TEST(AppUpdateModel, theQuietCheckKeepsTheNoticeAndTheExplicitOneOpensTheDownload)
{
    FakeOpenAIServer server;
    ModelFixture fixture;
    fixture.latestReleaseURL = server.url("/api/app/latest");
    AppModel &model = fixture.makeModel();
    QSignalSpy changed(&model, &AppModel::availableAppUpdateChanged);
    const auto reply = [&](int status, const QByteArray &body) {
        server.enqueueReply("/api/app/latest", FakeOpenAIServer::json(status, body));
    };
    const QByteArray newer = R"({"version":"99.0","downloadUrl":"https://quorla.app/dl/99"})";
    reply(200, newer);
    reply(200, newer);
    reply(500, "{}");
    for (int check = 0; check < 3; ++check)
        ASSERT_TRUE(waitForDone(model.checkForAppUpdate()));
    EXPECT_EQ(changed.size(), 2) << "the same result again wakes no observer";
    EXPECT_FALSE(model.hasAvailableAppUpdate());
    EXPECT_FALSE(model.errorMessage());

    UrlRecorder browser;
    const QStringList schemes{"https", "http", "file"};
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, &browser, "open");
    const auto resetHandlers = qScopeGuard([&schemes] {
        for (const QString &scheme : schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    });
    for (const QByteArray &body : {newer, QByteArray(R"({"version":"99.0","downloadUrl":"file:///etc/passwd"})")}) {
        reply(200, body);
        ASSERT_TRUE(waitForDone(model.checkForUpdatesAndOpenDownload()));
    }
    EXPECT_EQ(browser.opened, QList<QUrl>{QUrl("https://quorla.app/dl/99")});
    EXPECT_EQ(model.availableAppUpdate()->version, "99.0");
}

} // namespace

#include "AppUpdateClientTest.moc"
