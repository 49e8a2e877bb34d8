#pragma once

#include <QString>
#include <QUrl>

// The latest release that is newer than the running application.
struct AppUpdate {
    QString version;
    QUrl downloadUrl;

    friend bool operator==(const AppUpdate &, const AppUpdate &) = default;
};
