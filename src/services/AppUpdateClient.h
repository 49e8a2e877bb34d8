#pragma once

#include "models/AppUpdate.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

class QNetworkAccessManager;

// Asks the release server for the latest version.
class AppUpdateClient
{
public:
    AppUpdateClient(QNetworkAccessManager *network, QUrl latestReleaseURL);

    [[nodiscard]] const QUrl &latestReleaseURL() const { return m_latestReleaseURL; }

    // The newer release, or absent. Throws on transport, status and decoding failures.
    QCoro::Task<std::optional<AppUpdate>> availableUpdate(QString currentVersion);

    static bool isVersion(const QString &candidate, const QString &current);
    static QList<int> normalizedVersionParts(const QString &version);

private:
    QNetworkAccessManager *m_network;
    QUrl m_latestReleaseURL;
};
