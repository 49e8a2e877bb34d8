// The release check.
#include "AppModel.h"

#include "AppInfo.h"

QString AppModel::currentAppVersion()
{
    return QStringLiteral(QUORLA_VERSION);
}

QCoro::Task<> AppModel::checkForAppUpdate()
{
    co_return;
}
