#include "platform/linux/DesktopApplicationNames.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

void write(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

TEST(DesktopApplicationNamesTest, findsTheEntryOfAWindowClassInTheUsersLanguage)
{
    QTemporaryDir user;
    QTemporaryDir system;
    write(system.filePath("editor.desktop"),
          "[Desktop Entry]\nType=Application\nName=Editor\nName[de]=Bearbeiter\nStartupWMClass=FancyEdit\n"
          "[Desktop Action new]\nName=New, Window\n");
    write(system.filePath("kde/org.example.Notes.desktop"),
          "[Desktop Entry]\nType=Application\nName=Notes, Lists & More\\n\n");
    write(system.filePath("term.desktop"),
          "[Desktop Entry]\nType=Application\nName=Old Term\n");
    write(user.filePath("term.desktop"),
          "# the user's own copy wins\n[Desktop Entry]\nType=Application\nName=My Term\n");
    write(system.filePath("docs.desktop"), "[Desktop Entry]\nType=Link\nName=Docs\n");
    write(system.filePath("broken.desktop"), "no group at all\nName=Broken\n");

    DesktopApplicationNames names({user.path(), system.path()}, "de_AT");
    struct Case {
        QString instance;
        QString className;
        std::optional<QString> expected;
    };
    const Case cases[] = {
        {"fancyedit", "FancyEdit", "Bearbeiter"}, {"notes", "Notes", "Notes, Lists & More\\n"},
        {"term", "Term", "My Term"}, {"docs", "Docs", std::nullopt}, {"broken", "Broken", std::nullopt},
        {QString(), QString(), std::nullopt}, {"unknown", "Unknown", std::nullopt},
    };
    for (const Case &c : cases)
        EXPECT_EQ(names.nameForWindowClass(c.instance, c.className), c.expected) << c.className.toStdString();
}

} // namespace
