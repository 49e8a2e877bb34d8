#pragma once

#include <QString>

// The desktop's login autostart entry for Quorla (XDG autostart): present means Quorla
// starts in the tray when the user logs in. The file is the only state, so a switch
// showing it is right even when the user edited the folder by hand.
class AutostartEntry
{
public:
    explicit AutostartEntry(QString filePath);

    // $XDG_CONFIG_HOME/autostart/<app id>.desktop (~/.config/... by default).
    static QString defaultFilePath();

    // The entry exists and is not hidden (Hidden=true is how desktops switch one off).
    [[nodiscard]] bool isEnabled() const;
    // Writes an entry starting `program --background`, or removes it; false when the
    // file could not be written or removed.
    bool setEnabled(bool enabled, const QString &program);

    [[nodiscard]] const QString &filePath() const { return m_filePath; }

private:
    QString m_filePath;
};
