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

TEST(AppUpdateClientVersions, partsAreLeadingNumbersOfDotSeparatedPieces)
{
    const struct {
        QString version;
        QList<int> parts;
    } cases[] = {
        {"2.10.3-beta", {2, 10, 3}}, {"beta2.1", {0, 1}}, {QString(), {}}, {"1..2.", {1, 2}}, {".7", {7}},
        {"99999999999.1", {0, 1}},                     // overflow
        {"\u0663.2", {0, 2}},                          // Arabic-Indic three
        {"4\U0001D7D9.1", {0, 1}},                     // numeric beyond the BMP
    };
    for (const auto &c : cases)
        EXPECT_EQ(AppUpdateClient::normalizedVersionParts(c.version), c.parts) << c.version.toStdString();
}

TEST(AppUpdateClientVersions, newerComparesPartByPart)
{
    const struct {
        QString candidate;
        QString current;
        bool newer;
    } cases[] = {
        {"1.2.0", "1.2", false}, {"1.2", "1.2.0", false}, {"1.10", "1.9", true}, {"1.9", "1.10", false},
        {"2", "1.99.99", true}, {"1.3", "1.2.9", true}, {"beta", QString(), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(AppUpdateClient::isVersion(c.candidate, c.current), c.newer)
            << c.candidate.toStdString() << " vs " << c.current.toStdString();
}

class AppUpdateClientTest : public ::testing::Test
{
protected:
    TaskResult<std::optional<AppUpdate>> check(const QByteArray &body, int status = 200,
                                               const QString &current = "1.2.9")
    {
        server.enqueueReply("/api/app/latest", FakeOpenAIServer::json(status, body));
        return waitForResult(client.availableUpdate(current));
    }

    AppModel &makeModel()
    {
        fixture.latestReleaseURL = server.url("/api/app/latest");
        return fixture.makeModel();
    }

    FakeOpenAIServer server;
    QNetworkAccessManager network;
    AppUpdateClient client{&network, server.url("/api/app/latest"), std::chrono::milliseconds(500)};
    ModelFixture fixture;
};

TEST_F(AppUpdateClientTest, releaseRepliesGiveAnUpdateOrNone)
{
    const QUrl download("https://quorla.app/dl/1.3");
    const QString decoding = "The data couldn't be read because it isn't in the correct format.";
    const QString unreadable = "OpenAI returned a response the app couldn't read.";
    const struct {
        const char *name;
        QByteArray body;
        int status;
        std::optional<AppUpdate> update;
        QString error;
    } cases[] = {
        {"newer, trimmed", "{\"version\":\" 1.3 \\n\",\"downloadUrl\":\"https://quorla.app/dl/1.3\",\"notes\":1}", 200,
         AppUpdate{"1.3", download}, QString()},
        {"same version", R"({"version":"1.2.9.0","downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt, QString()},
        {"no link", R"({"version":"1.3"})", 200, std::nullopt, QString()},
        {"null members", R"({"version":null,"downloadUrl":null})", 200, std::nullopt, QString()},
        {"version not a string", R"({"version":1.3,"downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt,
         decoding},
        {"not JSON", "<html>", 200, std::nullopt, decoding},
        {"304", "", 304, std::nullopt, unreadable},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const auto result = check(c.body, c.status);
        ASSERT_TRUE(result.finished);
        EXPECT_EQ(result.errorText(), c.error);
        if (c.error.isEmpty()) {
            EXPECT_EQ(result.value, std::optional<std::optional<AppUpdate>>(c.update));
        }
    }
    const auto &request = server.requests().first();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.headers.value("accept"), "application/json");
    EXPECT_FALSE(request.headers.contains("authorization"));
    EXPECT_TRUE(request.body.isEmpty());
}

TEST_F(AppUpdateClientTest, modelStoresTheResultQuietly)
{
    AppModel &model = makeModel();
    QSignalSpy changed(&model, &AppModel::availableAppUpdateChanged);

    server.setReply("/api/app/latest",
                    FakeOpenAIServer::json(200, R"({"version":"99.0","downloadUrl":"https://quorla.app/dl/99"})"));
    ASSERT_TRUE(waitForDone(model.checkForAppUpdate()));
    ASSERT_TRUE(model.hasAvailableAppUpdate());
    EXPECT_EQ(model.availableAppUpdate()->version, "99.0");
    EXPECT_EQ(changed.size(), 1);

    // The same result again wakes no observer; a failure clears the notice and shows nothing.
    ASSERT_TRUE(waitForDone(model.checkForAppUpdate()));
    EXPECT_EQ(changed.size(), 1);
    server.setReply("/api/app/latest", FakeOpenAIServer::json(500, "{}"));
    ASSERT_TRUE(waitForDone(model.checkForAppUpdate()));
    EXPECT_FALSE(model.hasAvailableAppUpdate());
    EXPECT_EQ(changed.size(), 2);
    EXPECT_FALSE(model.errorMessage());
}

TEST_F(AppUpdateClientTest, checkForUpdatesOpensOnlyANewerWebDownload)
{
    AppModel &model = makeModel();
    UrlRecorder browser;
    const QStringList schemes{"https", "http", "file"};
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, &browser, "open");
    const auto resetHandlers = qScopeGuard([&schemes] {
        for (const QString &scheme : schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    });

    const struct {
        QByteArray body;
        QList<QUrl> opened;
    } cases[] = {
        {R"({"version":"99.0","downloadUrl":"https://quorla.app/dl/99"})", {QUrl("https://quorla.app/dl/99")}},
        {R"({"version":"0.0.1","downloadUrl":"https://quorla.app/dl/old"})", {}},
        {R"({"version":"99.0","downloadUrl":"file:///etc/passwd"})", {}},
    };
    for (const auto &c : cases) {
        browser.opened.clear();
        server.enqueueReply("/api/app/latest", FakeOpenAIServer::json(200, c.body));
        ASSERT_TRUE(waitForDone(model.checkForUpdatesAndOpenDownload()));
        EXPECT_EQ(browser.opened, c.opened) << c.body.toStdString();
    }
}

} // namespace

#include "AppUpdateClientTest.moc"
