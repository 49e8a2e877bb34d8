#pragma once

#include <QList>
#include <QString>
#include <optional>

// The names applications give themselves in their .desktop entries, found by window class.
class DesktopApplicationNames
{
public:
    // The entry's Name in the user's language, for a window whose WM_CLASS is
    // (instance, className): matched by StartupWMClass, else by the entry's file name.
    [[nodiscard]] std::optional<QString> nameForWindowClass(const QString &instance, const QString &className);

private:
    struct Entry {
        QString id;       // file name without ".desktop", lower case
        QString wmClass;  // StartupWMClass, lower case
        QString name;
    };

    void load();

    QList<Entry> m_entries;
    bool m_loaded = false;
};
