#include "services/ServiceAddress.h"

#include <gtest/gtest.h>

namespace {

using namespace ServiceAddress;

TEST(ServiceAddress, environmentThenPreferenceThenDefault)
{
    const std::optional<QString> none;
    const struct {
        std::optional<QString> environment, preference;
        QString expected;
    } cases[] = {
        {none, none, "https://api.openai.com"},
        {none, "https://pref.example/x", "https://pref.example/x"},
        {" http://127.0.0.1:8080 ", "https://pref.example", "http://127.0.0.1:8080"},
        // Values that are no absolute web address are passed over.
        {QString(), "https://pref.example", "https://pref.example"},
        {"localhost:8080", none, "https://api.openai.com"},
        {"ftp://files.example", "not a url", "https://api.openai.com"},
        {"https://", none, "https://api.openai.com"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(normalizedAPIBaseURL(c.environment, c.preference), QUrl(c.expected)) << c.expected.toStdString();
    EXPECT_EQ(normalizedLatestReleaseURL("::bad::"), QUrl("https://quorla.app/api/app/latest"));
    EXPECT_EQ(normalizedLatestReleaseURL("http://127.0.0.1:9/latest"), QUrl("http://127.0.0.1:9/latest"));
}

TEST(ServiceAddress, endpointPathFollowsThePrefix)
{
    const std::pair<QString, QString> cases[] = {
        {"https://host/openai//", "https://host/openai/v1/chat/completions"},
        {"https://host:8443/a/b?x=1#f", "https://host:8443/a/b/v1/chat/completions?x=1"},
    };
    for (const auto &[base, expected] : cases)
        EXPECT_EQ(endpointURL(QUrl(base), "/v1/chat/completions"), QUrl(expected)) << base.toStdString();
}

// "" no problem; "key" the refusal to send the key in the clear; "address" not an address.
TEST(ServiceAddress, theKeyTravelsOnlyEncryptedOrOnThisMachine)
{
    const QString notAnAddress = "Enter an address that starts with https:// or http://, such as https://api.openai.com.";
    const std::pair<QString, QString> cases[] = {
        {"HTTPS://API.OPENAI.COM", ""},
        {" http://127.0.0.1:9000/v1 ", ""},
        {"http://127.8.9.1", ""},
        {"http://localhost:9000/v", ""},
        {"http://[::1]:9000", ""},
        {"http://api.openai.com", "key"},
        {"http://192.168.1.20:8000", "key"},
        {"http://localhost.evil.example", "key"},
        {"ftp://example.com", "address"},
        {"api.openai.com", "address"},
        {"https://", "address"},
        {"http:// spaced.example", "address"},
    };
    for (const auto &[typed, problem] : cases) {
        const auto refusal = refusalForAPIKey(QUrl(typed.trimmed()));
        EXPECT_EQ(problemWith(typed), problem == "key" ? refusal : problem == "address" ? notAnAddress
                                                                                        : std::optional<QString>())
            << typed.toStdString();
        if (problem != "address") {
            EXPECT_EQ(refusal.has_value(), problem == "key") << typed.toStdString();
        }
    }
    EXPECT_EQ(problemWith(" "), std::nullopt);
    EXPECT_TRUE(refusalForAPIKey(QUrl("ftp://127.0.0.1")));
}

} // namespace
