#include "platform/linux/SettingsPanes.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(SettingsPanesTest, eachAnchorOpensTheRunningDesktopsOwnPlace)
{
    const QStringList everything{"gnome-control-center", "systemsettings", "xfce4-keyboard-settings",
                                 "xfce4-accessibility-settings", "pavucontrol"};
    struct Case {
        const char *anchor;
        QStringList desktops;
        QStringList installed;
        std::optional<SettingsPaneCommand> expected;
    };
    const QList<Case> cases{
        {"Privacy_Microphone", {"ubuntu", "GNOME"}, everything, SettingsPaneCommand{"gnome-control-center", {"sound"}}},
        {"Privacy_Accessibility", {"GNOME"}, everything,
         SettingsPaneCommand{"gnome-control-center", {"universal-access"}}},
        {"Privacy_ListenEvent", {"GNOME"}, everything, SettingsPaneCommand{"gnome-control-center", {"keyboard"}}},
        {"Privacy_Microphone", {"KDE"}, everything, SettingsPaneCommand{"systemsettings", {"kcm_pulseaudio"}}},
        {"Privacy_Accessibility", {"KDE"}, {"systemsettings5"}, SettingsPaneCommand{"systemsettings5", {"kcm_access"}}},
        {"Privacy_ListenEvent", {"XFCE"}, everything, SettingsPaneCommand{"xfce4-keyboard-settings", {}}},
        {"Privacy_Microphone", {"XFCE"}, everything, SettingsPaneCommand{"gnome-control-center", {"sound"}}},
        {"Privacy_Microphone", {"X-Cinnamon"}, {"pavucontrol"}, SettingsPaneCommand{"pavucontrol", {"--tab=4"}}},
        {"Privacy_ListenEvent", {"GNOME"}, {"pavucontrol"}, std::nullopt},
        {"Privacy_Camera", {"GNOME"}, everything, std::nullopt},
        {"Privacy_Microphone", {}, {}, std::nullopt},
    };
    for (const Case &c : cases) {
        const auto command = settingsPaneCommand(QString::fromLatin1(c.anchor), c.desktops,
                                                 [&c](const QString &program) { return c.installed.contains(program); });
        EXPECT_EQ(command, c.expected) << c.anchor << " on " << c.desktops.join(':').toStdString();
    }
}

} // namespace
