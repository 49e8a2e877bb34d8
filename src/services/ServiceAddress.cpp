#include "ServiceAddress.h"

#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QHostAddress>

namespace ServiceAddress {

namespace {

std::optional<QUrl> usableAddress(const std::optional<QString> &value)
{
    if (!value)
        return std::nullopt;
    const QUrl url(value->trimmed(), QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() || (scheme != u"https" && scheme != u"http"))
        return std::nullopt;
    return url;
}

std::optional<QString> environmentValue()
{
    if (!qEnvironmentVariableIsSet("QUORLA_API_BASE_URL"))
        return std::nullopt;
    return qEnvironmentVariable("QUORLA_API_BASE_URL");
}

bool isLoopbackHost(const QString &host)
{
    if (host.compare(u"localhost", Qt::CaseInsensitive) == 0)
        return true;
    const QHostAddress address(host);
    return !address.isNull() && address.isLoopback();
}

} // namespace

QUrl defaultAPIBaseURL()
{
    return QUrl(QStringLiteral("https://api.openai.com"));
}

QUrl defaultLatestReleaseURL()
{
    return QUrl(QStringLiteral("https://quorla.app/api/app/latest"));
}

QUrl normalizedAPIBaseURL(const std::optional<QString> &environmentValue,
                          const std::optional<QString> &preferenceValue)
{
    if (const auto url = usableAddress(environmentValue))
        return *url;
    if (const auto url = usableAddress(preferenceValue))
        return *url;
    return defaultAPIBaseURL();
}

QUrl normalizedLatestReleaseURL(const std::optional<QString> &preferenceValue)
{
    return usableAddress(preferenceValue).value_or(defaultLatestReleaseURL());
}

std::optional<QUrl> environmentAPIBaseURL()
{
    return usableAddress(environmentValue());
}

QUrl configuredAPIBaseURL(const PreferencesStore &preferences)
{
    return normalizedAPIBaseURL(environmentValue(), preferences.stringValue(PreferenceKeys::apiBaseURL));
}

QUrl configuredLatestReleaseURL(const PreferencesStore &preferences)
{
    return normalizedLatestReleaseURL(preferences.stringValue(PreferenceKeys::latestReleaseURL));
}

QUrl endpointURL(const QUrl &baseURL, const QString &path)
{
    QUrl url = baseURL;
    QString prefix = baseURL.path();
    while (prefix.endsWith(u'/'))
        prefix.chop(1);
    url.setPath(prefix + path);
    url.setFragment(QString());
    return url;
}

std::optional<QString> problemWith(const QString &typedAddress)
{
    if (typedAddress.trimmed().isEmpty())
        return std::nullopt;
    const auto url = usableAddress(typedAddress);
    if (!url)
        return QStringLiteral("Enter an address that starts with https:// or http://, such as %1.")
            .arg(defaultAPIBaseURL().toDisplayString());
    return refusalForAPIKey(*url);
}

std::optional<QString> refusalForAPIKey(const QUrl &baseURL)
{
    const QString scheme = baseURL.scheme().toLower();
    if (scheme == u"https" || (scheme == u"http" && isLoopbackHost(baseURL.host())))
        return std::nullopt;
    return QStringLiteral("The OpenAI API address %1 doesn't use HTTPS, so your API key would travel "
                          "unencrypted. Use an https:// address, or http:// only on this computer.")
        .arg(baseURL.toDisplayString());
}

} // namespace ServiceAddress
