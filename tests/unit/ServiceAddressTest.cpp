#include "services/ServiceAddress.h"

#include <gtest/gtest.h>

namespace {

using namespace ServiceAddress;

TEST(ServiceAddress, environmentThenPreferenceThenDefault)
{
    const struct {
        std::optional<QString> environment;
        std::optional<QString> preference;
        QString expected;
    } cases[] = {
        {std::nullopt, std::nullopt, QStringLiteral("https://api.openai.com")},
        {std::nullopt, QStringLiteral("https://pref.example/openai"), QStringLiteral("https://pref.example/openai")},
        {QStringLiteral(" http://127.0.0.1:8080 "), QStringLiteral("https://pref.example"),
         QStringLiteral("http://127.0.0.1:8080")},
        // Values that are no absolute web address are passed over.
        {QString(), QStringLiteral("https://pref.example"), QStringLiteral("https://pref.example")},
        {QStringLiteral("localhost:8080"), std::nullopt, QStringLiteral("https://api.openai.com")},
        {QStringLiteral("ftp://files.example"), QStringLiteral("not a url"), QStringLiteral("https://api.openai.com")},
        {QStringLiteral("https://"), std::nullopt, QStringLiteral("https://api.openai.com")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedAPIBaseURL(c.environment, c.preference), QUrl(c.expected))
            << c.environment.value_or(QStringLiteral("-")).toStdString();

    EXPECT_EQ(normalizedLatestReleaseURL(std::nullopt), QUrl(QStringLiteral("https://quorla.app/api/app/latest")));
    EXPECT_EQ(normalizedLatestReleaseURL(QStringLiteral("::bad::")), defaultLatestReleaseURL());
    EXPECT_EQ(normalizedLatestReleaseURL(QStringLiteral("http://127.0.0.1:9/latest")),
              QUrl(QStringLiteral("http://127.0.0.1:9/latest")));
}

TEST(ServiceAddress, endpointPathFollowsThePrefix)
{
    const struct {
        QString base;
        QString expected;
    } cases[] = {
        {QStringLiteral("https://api.openai.com"), QStringLiteral("https://api.openai.com/v1/chat/completions")},
        {QStringLiteral("https://api.openai.com/"), QStringLiteral("https://api.openai.com/v1/chat/completions")},
        {QStringLiteral("https://host/openai"), QStringLiteral("https://host/openai/v1/chat/completions")},
        {QStringLiteral("https://host/openai//"), QStringLiteral("https://host/openai/v1/chat/completions")},
        {QStringLiteral("https://host:8443/a/b?x=1#f"), QStringLiteral("https://host:8443/a/b/v1/chat/completions?x=1")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(endpointURL(QUrl(c.base), QStringLiteral("/v1/chat/completions")), QUrl(c.expected))
            << c.base.toStdString();
}

TEST(ServiceAddress, keyTravelsOnlyEncryptedOrOnThisMachine)
{
    const struct {
        QString base;
        bool refused;
    } cases[] = {
        {QStringLiteral("https://api.openai.com"), false},
        {QStringLiteral("HTTPS://API.OPENAI.COM"), false},
        {QStringLiteral("http://127.0.0.1:8080"), false},
        {QStringLiteral("http://127.8.9.1"), false},
        {QStringLiteral("http://localhost:9000/v"), false},
        {QStringLiteral("http://[::1]:9000"), false},
        {QStringLiteral("http://api.openai.com"), true},
        {QStringLiteral("http://192.168.1.20:8000"), true},
        {QStringLiteral("http://localhost.evil.example"), true},
        {QStringLiteral("ftp://127.0.0.1"), true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(refusalForAPIKey(QUrl(c.base)).has_value(), c.refused) << c.base.toStdString();
}

TEST(ServiceAddress, problemWithATypedAddress)
{
    const QString notAnAddress =
        QStringLiteral("Enter an address that starts with https:// or http://, such as https://api.openai.com.");
    const struct {
        QString typed;
        QString problem; // "" none; "*" the refusal to send the key
    } cases[] = {
        {QString(), QString()},
        {QStringLiteral("  "), QString()},
        {QStringLiteral("https://api.openai.com"), QString()},
        {QStringLiteral(" http://127.0.0.1:9000/v1 "), QString()},
        {QStringLiteral("api.openai.com"), notAnAddress},
        {QStringLiteral("ftp://example.com"), notAnAddress},
        {QStringLiteral("https://"), notAnAddress},
        {QStringLiteral("http:// spaced.example"), notAnAddress},
        {QStringLiteral("http://192.168.1.20:8000"), QStringLiteral("*")},
    };
    for (const auto &c : cases) {
        const auto problem = problemWith(c.typed);
        if (c.problem == u"*")
            EXPECT_EQ(problem, refusalForAPIKey(QUrl(c.typed))) << c.typed.toStdString();
        else
            EXPECT_EQ(problem.value_or(QString()), c.problem) << c.typed.toStdString();
    }
}

} // namespace
