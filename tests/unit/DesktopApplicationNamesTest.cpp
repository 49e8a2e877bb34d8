#include "ModelTest.h"

#include "platform/linux/DesktopApplicationNames.h"
#include "platform/linux/X11ApplicationHandle.h"

#include <QTemporaryDir>

namespace {

TEST(DesktopApplicationNamesTest, findsTheEntryOfAWindowClassInTheUsersLanguage)
{
    QTemporaryDir user, system;
    const QByteArray app = "[Desktop Entry]\nType=Application\n";
    writeTestFile(system.filePath("editor.desktop"),
                  app + "Name=Editor\nName[de]=Bearbeiter\nStartupWMClass=FancyEdit\n[Desktop Action new]\nName=New\n");
    writeTestFile(system.filePath("kde/org.example.Notes.desktop"), app + "Name=Notes, Lists & More\\n\n");
    writeTestFile(system.filePath("term.desktop"), app + "Name=Old Term\n");
    writeTestFile(system.filePath("shell.desktop"), app + "Name=Shell\nCategories=System;TerminalEmulator;\n");
    writeTestFile(user.filePath("term.desktop"), "# the user's own copy wins\n" + app + "Name=My Term\n");
    writeTestFile(system.filePath("docs.desktop"), "[Desktop Entry]\nType=Link\nName=Docs\n");
    writeTestFile(system.filePath("broken.desktop"), "no group at all\nName=Broken\n");
    DesktopApplicationNames names({user.path(), system.path()}, "de_AT");
    const std::tuple<QString, QString, std::optional<QString>> cases[] = {
        {"fancyedit", "FancyEdit", "Bearbeiter"},
        {"notes", "Notes", "Notes, Lists & More\\n"},
        {"term", "Term", "My Term"},
        {"docs", "Docs", std::nullopt},
        {"broken", "Broken", std::nullopt},
        {QString(), QString(), std::nullopt},
    };
    for (const auto &[instance, className, expected] : cases)
        EXPECT_EQ(names.nameForWindowClass(instance, className), expected) << className.toStdString();
    EXPECT_TRUE(names.isTerminalEmulator("shell", "Shell"));
    EXPECT_FALSE(names.isTerminalEmulator("fancyedit", "FancyEdit"));
}

// A terminal never gets Ctrl+V, which it types as a control character.
TEST(DesktopApplicationNamesTest, terminalsPasteWithTheKeysTheyBind)
{
    using enum KeySynthesizer::PasteShortcut;
    const std::tuple<QString, QString, KeySynthesizer::PasteShortcut> cases[] = {
        {"urxvt", "URxvt", shiftInsert},
        {"gnome-terminal-server", "Gnome-terminal", controlShiftV},
        {"gedit", "Gedit", controlV},
    };
    for (const auto &[instance, className, expected] : cases)
        EXPECT_EQ(pasteShortcutForWindowClass(instance, className), expected) << className.toStdString();
}

} // namespace
