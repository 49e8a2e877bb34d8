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
    write(system.filePath(QStringLiteral("editor.desktop")),
          "[Desktop Entry]\nType=Application\nName=Editor\nName[de]=Bearbeiter\nStartupWMClass=FancyEdit\n"
          "[Desktop Action new]\nName=New, Window\n");
    write(system.filePath(QStringLiteral("kde/org.example.Notes.desktop")),
          "[Desktop Entry]\nType=Application\nName=Notes, Lists & More\\n\n");
    write(system.filePath(QStringLiteral("term.desktop")),
          "[Desktop Entry]\nType=Application\nName=Old Term\n");
    write(user.filePath(QStringLiteral("term.desktop")),
          "# the user's own copy wins\n[Desktop Entry]\nType=Application\nName=My Term\n");
    write(system.filePath(QStringLiteral("docs.desktop")), "[Desktop Entry]\nType=Link\nName=Docs\n");
    write(system.filePath(QStringLiteral("broken.desktop")), "no group at all\nName=Broken\n");

    DesktopApplicationNames names({user.path(), system.path()}, QStringLiteral("de_AT"));
    struct Case {
        QString instance;
        QString className;
        std::optional<QString> expected;
    };
    const Case cases[] = {
        {QStringLiteral("fancyedit"), QStringLiteral("FancyEdit"), QStringLiteral("Bearbeiter")},
        {QStringLiteral("notes"), QStringLiteral("Notes"), QStringLiteral("Notes, Lists & More\\n")},
        {QStringLiteral("term"), QStringLiteral("Term"), QStringLiteral("My Term")},
        {QStringLiteral("docs"), QStringLiteral("Docs"), std::nullopt},
        {QStringLiteral("broken"), QStringLiteral("Broken"), std::nullopt},
        {QString(), QString(), std::nullopt},
        {QStringLiteral("unknown"), QStringLiteral("Unknown"), std::nullopt},
    };
    for (const Case &c : cases)
        EXPECT_EQ(names.nameForWindowClass(c.instance, c.className), c.expected) << c.className.toStdString();
}

} // namespace
