#include "AppUpdateClient.h"

AppUpdateClient::AppUpdateClient(QNetworkAccessManager *network, QUrl latestReleaseURL)
    : m_network(network)
    , m_latestReleaseURL(std::move(latestReleaseURL))
{
}

QCoro::Task<std::optional<AppUpdate>> AppUpdateClient::availableUpdate(QString currentVersion)
{
    Q_UNUSED(currentVersion)
    co_return std::nullopt;
}

bool AppUpdateClient::isVersion(const QString &candidate, const QString &current)
{
    Q_UNUSED(candidate)
    Q_UNUSED(current)
    return false;
}

QList<int> AppUpdateClient::normalizedVersionParts(const QString &version)
{
    Q_UNUSED(version)
    return {};
}
