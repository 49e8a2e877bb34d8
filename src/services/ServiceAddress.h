#pragma once

#include <QString>
#include <QUrl>
#include <optional>

class PreferencesStore;

// Where the speech service and the release check live. Both are configuration, so a
// user can point Quorla at any OpenAI-compatible server.
namespace ServiceAddress {

QUrl defaultAPIBaseURL();
QUrl defaultLatestReleaseURL();

// The API base address: the environment's value, else the preference, else the
// default. A value that is not an absolute http(s) address is passed over.
QUrl normalizedAPIBaseURL(const std::optional<QString> &environmentValue,
                          const std::optional<QString> &preferenceValue);

// The release endpoint: the preference when it is an absolute http(s) address, else the default.
QUrl normalizedLatestReleaseURL(const std::optional<QString> &preferenceValue);

// QUORLA_API_BASE_URL when it names a usable address: it wins over the preference.
std::optional<QUrl> environmentAPIBaseURL();

// The addresses this user configured: QUORLA_API_BASE_URL, then the "apiBaseURL"
// preference; the "latestReleaseURL" preference.
QUrl configuredAPIBaseURL(const PreferencesStore &preferences);
QUrl configuredLatestReleaseURL(const PreferencesStore &preferences);

// The base address with an endpoint path appended after any path prefix it carries.
QUrl endpointURL(const QUrl &baseURL, const QString &path);

// What is wrong with an address typed for the API, or absent when it can be used
// (an empty one means the default).
std::optional<QString> problemWith(const QString &typedAddress);

// Why the API key must not be sent to this address (plain HTTP beyond this machine),
// or absent when it may.
std::optional<QString> refusalForAPIKey(const QUrl &baseURL);

} // namespace ServiceAddress
