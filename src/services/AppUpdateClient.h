#pragma once

#include "models/AppUpdate.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <chrono>
#include <optional>

class QNetworkAccessManager;

// Asks the release server for the latest version.
class AppUpdateClient
{
public:
    AppUpdateClient(QNetworkAccessManager *network, QUrl latestReleaseURL,
                    std::chrono::milliseconds transferTimeout = std::chrono::seconds(60));

    [[nodiscard]] const QUrl &latestReleaseURL() const { return m_latestReleaseURL; }

    // The newer release, or absent. Throws on transport failures (PlatformError), a
    // status outside 200 to 299 (QuorlaError::invalidAPIResponse) and undecodable
    // replies (PlatformError).
    QCoro::Task<std::optional<AppUpdate>> availableUpdate(QString currentVersion);

    // True when candidate is newer than current, part by part, a missing part being 0.
    static bool isVersion(const QString &candidate, const QString &current);
    // The numeric parts: each dot-separated piece's leading number, 0 when it has none.
    static QList<int> normalizedVersionParts(const QString &version);

private:
    QNetworkAccessManager *m_network;
    QUrl m_latestReleaseURL;
    std::chrono::milliseconds m_transferTimeout;
};
