// The release check.
#include "AppModel.h"

#include "AppInfo.h"
#include "services/AppUpdateClient.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QPointer>

QString AppModel::currentAppVersion()
{
    for (const QString &version : {QStringLiteral(QUORLA_VERSION), QCoreApplication::applicationVersion()}) {
        if (!version.isEmpty())
            return version;
    }
    return QStringLiteral("0.0.0");
}

QCoro::Task<> AppModel::checkForAppUpdate()
{
    const QPointer<AppModel> self(this);
    const std::shared_ptr<AppUpdateClient> client = m_services.appUpdateClient;
    const QString current = currentAppVersion();
    std::optional<AppUpdate> update;
    try {
        update = co_await client->availableUpdate(current);
    } catch (...) {
        // A failed check is not the user's concern; it only hides an earlier notice.
        update.reset();
    }
    if (self)
        self->setAvailableAppUpdate(update);
}

QCoro::Task<> AppModel::checkForUpdatesAndOpenDownload()
{
    const QPointer<AppModel> self(this);
    co_await checkForAppUpdate();
    if (!self || !self->m_availableAppUpdate)
        co_return;
    const QUrl link = self->m_availableAppUpdate->downloadUrl;
    // The link comes from a server: only ever hand a web address to the browser.
    if (link.scheme() == u"https" || link.scheme() == u"http")
        QDesktopServices::openUrl(link);
}

void AppModel::checkForUpdates()
{
    checkForUpdatesAndOpenDownload();
}
