#include "AutostartEntry.h"

#include "AppInfo.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// Desktop entries quote an argument that holds a space or a reserved character.
QString quotedArgument(QString argument)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    if (std::none_of(argument.begin(), argument.end(), [](QChar c) { return reserved.contains(c); }))
        return argument;
    for (const QString &escaped : {QStringLiteral("\\"), QStringLiteral("\""), QStringLiteral("`"), QStringLiteral("$")})
        argument.replace(escaped, u'\\' + escaped);
    return u'"' + argument + u'"';
}

} // namespace

AutostartEntry::AutostartEntry(QString filePath)
    : m_filePath(std::move(filePath))
{
}

QString AutostartEntry::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
         + QStringLiteral("/autostart/" QUORLA_APP_ID ".desktop");
}

bool AutostartEntry::isEnabled() const
{
    QFile file(m_filePath);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    while (!file.atEnd()) {
        if (file.readLine().trimmed().replace(' ', QByteArray()) == "Hidden=true")
            return false;
    }
    return true;
}

bool AutostartEntry::setEnabled(bool enabled, const QString &program)
{
    if (!enabled)
        return !QFileInfo::exists(m_filePath) || QFile::remove(m_filePath);
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    QSaveFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=" QUORLA_APP_NAME "\n"
                                         "Comment=Dictation in the tray, started at login\n"
                                         "Exec=%1 --background\n"
                                         "Icon=" QUORLA_APP_ID "\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(quotedArgument(program));
    file.write(entry.toUtf8());
    return file.commit();
}
