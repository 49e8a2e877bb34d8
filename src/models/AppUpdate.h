#pragma once

#include <QDataStream>
#include <QString>
#include <QUrl>

// The latest release that is newer than the running application.
struct AppUpdate {
    QString version;
    QUrl downloadUrl;

    friend bool operator==(const AppUpdate &, const AppUpdate &) = default;
    // Carried to the window's process.
    friend QDataStream &operator<<(QDataStream &out, const AppUpdate &update)
    {
        return out << update.version << update.downloadUrl;
    }
    friend QDataStream &operator>>(QDataStream &in, AppUpdate &update)
    {
        return in >> update.version >> update.downloadUrl;
    }
};
