#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// The desktop's own settings places for the privacy anchors of Quorla's settings page
// ("Privacy_Microphone", "Privacy_ListenEvent", "Privacy_Accessibility").

struct SettingsPaneCommand {
    QString program;
    QStringList arguments;

    friend bool operator==(const SettingsPaneCommand &, const SettingsPaneCommand &) = default;
};

// The command that opens the anchor's place: the running desktop's settings program
// first (desktops as XDG_CURRENT_DESKTOP lists them), then any other one installed.
// Absent for an unknown anchor or when no settings program is installed.
std::optional<SettingsPaneCommand> settingsPaneCommand(const QString &anchor, const QStringList &desktops,
                                                       const std::function<bool(const QString &program)> &isInstalled);

// Starts that command detached; false when there is none or it could not start.
bool openDesktopSettingsPane(const QString &anchor);
