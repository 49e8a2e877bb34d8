#include "platform/linux/SettingsPanes.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(SettingsPanesTest, eachAnchorOpensTheRunningDesktopsOwnPlace)
{
    const QStringList all{"gnome-control-center", "systemsettings", "xfce4-keyboard-settings", "pavucontrol"};
    using Command = std::optional<SettingsPaneCommand>;
    const std::tuple<const char *, QStringList, QStringList, Command> cases[] = {
        {"Microphone", {"ubuntu", "GNOME"}, all, SettingsPaneCommand{"gnome-control-center", {"sound"}}},
        {"Accessibility", {"GNOME"}, all, SettingsPaneCommand{"gnome-control-center", {"universal-access"}}},
        {"ListenEvent", {"GNOME"}, all, SettingsPaneCommand{"gnome-control-center", {"keyboard"}}},
        {"Microphone", {"KDE"}, all, SettingsPaneCommand{"systemsettings", {"kcm_pulseaudio"}}},
        {"Accessibility", {"KDE"}, {"systemsettings5"}, SettingsPaneCommand{"systemsettings5", {"kcm_access"}}},
        {"ListenEvent", {"XFCE"}, all, SettingsPaneCommand{"xfce4-keyboard-settings", {}}},
        {"Microphone", {"XFCE"}, all, SettingsPaneCommand{"gnome-control-center", {"sound"}}},
        {"Microphone", {"X-Cinnamon"}, {"pavucontrol"}, SettingsPaneCommand{"pavucontrol", {"--tab=4"}}},
        {"ListenEvent", {"GNOME"}, {"pavucontrol"}, std::nullopt},
        {"Camera", {"GNOME"}, all, std::nullopt},
        {"Microphone", {}, {}, std::nullopt},
    };
    for (const auto &[anchor, desktops, installed, expected] : cases) {
        const auto isInstalled = [&](const QString &program) { return installed.contains(program); };
        EXPECT_EQ(settingsPaneCommand(QString("Privacy_") + anchor, desktops, isInstalled), expected)
            << anchor << " on " << desktops.join(':').toStdString();
    }
}

} // namespace
