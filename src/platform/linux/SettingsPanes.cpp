#include "SettingsPanes.h"

#include <QProcess>
#include <QStandardPaths>
#include <array>

namespace {

struct SettingsProgram {
    const char *desktop; // as XDG_CURRENT_DESKTOP names it; empty for any desktop
    const char *program;
    const char *microphone;
    const char *keyboard;
    const char *accessibility;
};

// Each place as the program takes it on its command line: nullptr when the program
// has no place for that anchor, "" when the program itself is the place.
constexpr std::array settingsPrograms{
    SettingsProgram{"GNOME", "gnome-control-center", "sound", "keyboard", "universal-access"},
    SettingsProgram{"KDE", "systemsettings", "kcm_pulseaudio", "kcm_keyboard", "kcm_access"},
    SettingsProgram{"KDE", "systemsettings5", "kcm_pulseaudio", "kcm_keyboard", "kcm_access"},
    SettingsProgram{"XFCE", "xfce4-keyboard-settings", nullptr, "", nullptr},
    SettingsProgram{"XFCE", "xfce4-accessibility-settings", nullptr, nullptr, ""},
    // The PulseAudio mixer, on its "Input Devices" tab, serves every desktop.
    SettingsProgram{"", "pavucontrol", "--tab=4", nullptr, nullptr},
};

std::optional<QStringList> argumentsFor(const SettingsProgram &settings, const QString &anchor)
{
    const char *place = nullptr;
    if (anchor == QLatin1String("Privacy_Microphone"))
        place = settings.microphone;
    else if (anchor == QLatin1String("Privacy_ListenEvent"))
        place = settings.keyboard;
    else if (anchor == QLatin1String("Privacy_Accessibility"))
        place = settings.accessibility;
    if (!place)
        return std::nullopt;
    if (!*place)
        return QStringList();
    return QStringList{QString::fromLatin1(place)};
}

bool belongsTo(const SettingsProgram &settings, const QStringList &desktops)
{
    return *settings.desktop && desktops.contains(QLatin1String(settings.desktop), Qt::CaseInsensitive);
}

} // namespace

std::optional<SettingsPaneCommand> settingsPaneCommand(const QString &anchor, const QStringList &desktops,
                                                       const std::function<bool(const QString &program)> &isInstalled)
{
    std::optional<SettingsPaneCommand> fallback;
    for (const SettingsProgram &settings : settingsPrograms) {
        const auto arguments = argumentsFor(settings, anchor);
        if (!arguments)
            continue;
        const QString program = QString::fromLatin1(settings.program);
        if (!isInstalled(program))
            continue;
        if (belongsTo(settings, desktops))
            return SettingsPaneCommand{program, *arguments};
        if (!fallback)
            fallback = SettingsPaneCommand{program, *arguments};
    }
    return fallback;
}

bool openDesktopSettingsPane(const QString &anchor)
{
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    const auto command = settingsPaneCommand(anchor, desktops, [](const QString &program) {
        return !QStandardPaths::findExecutable(program).isEmpty();
    });
    return command && QProcess::startDetached(command->program, command->arguments);
}
