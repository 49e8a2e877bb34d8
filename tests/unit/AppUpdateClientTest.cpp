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
        {QStringLiteral("2.10.3-beta"), {2, 10, 3}},
        {QStringLiteral("beta2.1"), {0, 1}},
        {QString(), {}},
        {QStringLiteral("1..2."), {1, 2}},
        {QStringLiteral(".7"), {7}},
        {QStringLiteral("99999999999.1"), {0, 1}},                     // overflow
        {QStringLiteral("\u0663.2"), {0, 2}},                          // Arabic-Indic three
        {QStringLiteral("1\u00BD.4"), {0, 4}},                         // a vulgar fraction is numeric
        {QStringLiteral("4\U0001D7D9.1"), {0, 1}},                     // numeric beyond the BMP
        {QStringLiteral(" 1.2"), {0, 2}},
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
        {QStringLiteral("1.2.0"), QStringLiteral("1.2"), false},
        {QStringLiteral("1.2"), QStringLiteral("1.2.0"), false},
        {QStringLiteral("1.10"), QStringLiteral("1.9"), true},
        {QStringLiteral("1.9"), QStringLiteral("1.10"), false},
        {QStringLiteral("1.2.3.4"), QStringLiteral("1.2.3"), true},
        {QStringLiteral("1.2.3.0"), QStringLiteral("1.2.3"), false},
        {QStringLiteral("0.0.1"), QStringLiteral("0.0.0"), true},
        {QStringLiteral("2"), QStringLiteral("1.99.99"), true},
        {QStringLiteral("1.3"), QStringLiteral("1.2.9"), true},
        {QStringLiteral("beta"), QString(), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(AppUpdateClient::isVersion(c.candidate, c.current), c.newer)
            << c.candidate.toStdString() << " vs " << c.current.toStdString();
}

class AppUpdateClientTest : public ::testing::Test
{
protected:
    TaskResult<std::optional<AppUpdate>> check(const QByteArray &body, int status = 200,
                                               const QString &current = QStringLiteral("1.2.9"))
    {
        server.enqueueReply("/api/app/latest", FakeOpenAIServer::json(status, body));
        return waitForResult(client.availableUpdate(current));
    }

    FakeOpenAIServer server;
    QNetworkAccessManager network;
    AppUpdateClient client{&network, server.url(QStringLiteral("/api/app/latest")), std::chrono::milliseconds(500)};
};

TEST_F(AppUpdateClientTest, releaseRepliesGiveAnUpdateOrNone)
{
    const QUrl download(QStringLiteral("https://quorla.app/dl/1.3"));
    const QString decoding = QStringLiteral("The data couldn't be read because it isn't in the correct format.");
    const QString unreadable = QStringLiteral("OpenAI returned a response the app couldn't read.");
    const struct {
        const char *name;
        QByteArray body;
        int status;
        std::optional<AppUpdate> update;
        QString error;
    } cases[] = {
        {"newer, trimmed", "{\"version\":\" 1.3 \\n\",\"downloadUrl\":\"https://quorla.app/dl/1.3\",\"notes\":1}", 200,
         AppUpdate{QStringLiteral("1.3"), download}, QString()},
        {"same version", R"({"version":"1.2.9.0","downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt, QString()},
        {"no link", R"({"version":"1.3"})", 200, std::nullopt, QString()},
        {"blank version", R"({"version":"  ","downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt, QString()},
        {"null members", R"({"version":null,"downloadUrl":null})", 200, std::nullopt, QString()},
        {"version not a string", R"({"version":1.3,"downloadUrl":"https://quorla.app/dl/1.3"})", 200, std::nullopt,
         decoding},
        {"not JSON", "<html>", 200, std::nullopt, decoding},
        {"array", "[]", 200, std::nullopt, decoding},
        {"304", "", 304, std::nullopt, unreadable},
        {"404", R"({"version":"9"})", 404, std::nullopt, unreadable},
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
    ModelFixture fixture;
    fixture.latestReleaseURL = server.url(QStringLiteral("/api/app/latest"));
    AppModel &model = fixture.makeModel();
    QSignalSpy changed(&model, &AppModel::availableAppUpdateChanged);

    server.setReply("/api/app/latest",
                    FakeOpenAIServer::json(200, R"({"version":"99.0","downloadUrl":"https://quorla.app/dl/99"})"));
    ASSERT_TRUE(waitForDone(model.checkForAppUpdate()));
    ASSERT_TRUE(model.hasAvailableAppUpdate());
    EXPECT_EQ(model.availableAppUpdate()->version, QStringLiteral("99.0"));
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
    ModelFixture fixture;
    fixture.latestReleaseURL = server.url(QStringLiteral("/api/app/latest"));
    AppModel &model = fixture.makeModel();
    UrlRecorder browser;
    for (const QString &scheme : {QStringLiteral("https"), QStringLiteral("http"), QStringLiteral("file")})
        QDesktopServices::setUrlHandler(scheme, &browser, "open");
    const auto resetHandlers = qScopeGuard([] {
        for (const QString &scheme : {QStringLiteral("https"), QStringLiteral("http"), QStringLiteral("file")})
            QDesktopServices::unsetUrlHandler(scheme);
    });

    const struct {
        QByteArray body;
        QList<QUrl> opened;
    } cases[] = {
        {R"({"version":"99.0","downloadUrl":"https://quorla.app/dl/99"})", {QUrl(QStringLiteral("https://quorla.app/dl/99"))}},
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
