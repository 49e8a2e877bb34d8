#pragma once

#include <QList>
#include <QStringList>
#include <QString>
#include <optional>

// The names applications give themselves in their .desktop entries, found by window class.
class DesktopApplicationNames
{
public:
    // Searches these applications directories, earlier ones first; by default the XDG ones.
    explicit DesktopApplicationNames(QStringList directories = {}, QString locale = {});

    // The entry's Name in the user's language, for a window whose WM_CLASS is
    // (instance, className): matched by StartupWMClass, else by the entry's file name.
    [[nodiscard]] std::optional<QString> nameForWindowClass(const QString &instance, const QString &className);
    // Whether that entry lists itself among the terminal emulators.
    [[nodiscard]] bool isTerminalEmulator(const QString &instance, const QString &className);

private:
    struct Entry {
        QString id;      // file name without ".desktop", lower case
        QString wmClass; // StartupWMClass, lower case
        QString name;
        bool terminal;
    };

    const Entry *entryForWindowClass(const QString &instance, const QString &className);
    void load();

    QStringList m_directories;
    QString m_locale;
    QList<Entry> m_entries;
    bool m_loaded = false;
};
