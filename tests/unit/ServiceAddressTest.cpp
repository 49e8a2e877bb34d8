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
        {std::nullopt, std::nullopt, "https://api.openai.com"},
        {std::nullopt, "https://pref.example/openai", "https://pref.example/openai"},
        {" http://127.0.0.1:8080 ", "https://pref.example",
         "http://127.0.0.1:8080"},
        // Values that are no absolute web address are passed over.
        {QString(), "https://pref.example", "https://pref.example"},
        {"localhost:8080", std::nullopt, "https://api.openai.com"},
        {"ftp://files.example", "not a url", "https://api.openai.com"},
        {"https://", std::nullopt, "https://api.openai.com"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedAPIBaseURL(c.environment, c.preference), QUrl(c.expected))
            << c.environment.value_or("-").toStdString();

    EXPECT_EQ(normalizedLatestReleaseURL(std::nullopt), QUrl("https://quorla.app/api/app/latest"));
    EXPECT_EQ(normalizedLatestReleaseURL("::bad::"), defaultLatestReleaseURL());
    EXPECT_EQ(normalizedLatestReleaseURL("http://127.0.0.1:9/latest"),
              QUrl("http://127.0.0.1:9/latest"));
}

TEST(ServiceAddress, endpointPathFollowsThePrefix)
{
    const struct {
        QString base;
        QString expected;
    } cases[] = {
        {"https://api.openai.com", "https://api.openai.com/v1/chat/completions"},
        {"https://api.openai.com/", "https://api.openai.com/v1/chat/completions"},
        {"https://host/openai", "https://host/openai/v1/chat/completions"},
        {"https://host/openai//", "https://host/openai/v1/chat/completions"},
        {"https://host:8443/a/b?x=1#f", "https://host:8443/a/b/v1/chat/completions?x=1"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(endpointURL(QUrl(c.base), "/v1/chat/completions"), QUrl(c.expected))
            << c.base.toStdString();
}

TEST(ServiceAddress, keyTravelsOnlyEncryptedOrOnThisMachine)
{
    const struct {
        QString base;
        bool refused;
    } cases[] = {
        {"https://api.openai.com", false},
        {"HTTPS://API.OPENAI.COM", false},
        {"http://127.0.0.1:8080", false},
        {"http://127.8.9.1", false},
        {"http://localhost:9000/v", false},
        {"http://[::1]:9000", false},
        {"http://api.openai.com", true},
        {"http://192.168.1.20:8000", true},
        {"http://localhost.evil.example", true},
        {"ftp://127.0.0.1", true},
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
