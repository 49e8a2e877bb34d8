#include "DesktopApplicationNames.h"

#include <QDirIterator>
#include <QFile>
#include <QLocale>
#include <QSet>
#include <QStandardPaths>
#include <QTextStream>

namespace {

// The keys of the [Desktop Entry] group. A tiny reader: QSettings would take the
// commas and backslashes of desktop entries for its own list and escape syntax.
QHash<QString, QString> desktopEntryKeys(const QString &path)
{
    QHash<QString, QString> keys;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return keys;
    QTextStream stream(&file);
    bool inEntry = false;
    QString line;
    while (stream.readLineInto(&line)) {
        line = line.trimmed();
        if (line.startsWith(u'[')) {
            if (inEntry)
                break;
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inEntry || line.startsWith(u'#') || equals <= 0)
            continue;
        keys.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return keys;
}

QString localizedName(const QHash<QString, QString> &keys, const QString &locale)
{
    for (const QString &key : {QStringLiteral("Name[%1]").arg(locale),
                               QStringLiteral("Name[%1]").arg(locale.section(u'_', 0, 0))}) {
        if (QString name = keys.value(key); !name.isEmpty())
            return name;
    }
    return keys.value(QStringLiteral("Name"));
}

} // namespace

DesktopApplicationNames::DesktopApplicationNames(QStringList directories, QString locale)
    : m_directories(directories.isEmpty() ? QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)
                                          : std::move(directories))
    , m_locale(locale.isEmpty() ? QLocale::system().name() : std::move(locale)) // "de_DE"
{
}

std::optional<QString> DesktopApplicationNames::nameForWindowClass(const QString &instance, const QString &className)
{
    const Entry *entry = entryForWindowClass(instance, className);
    return entry ? std::optional(entry->name) : std::nullopt;
}

bool DesktopApplicationNames::isTerminalEmulator(const QString &instance, const QString &className)
{
    const Entry *entry = entryForWindowClass(instance, className);
    return entry && entry->terminal;
}

const DesktopApplicationNames::Entry *DesktopApplicationNames::entryForWindowClass(const QString &instance,
                                                                                   const QString &className)
{
    load();
    const QString wanted[] = {className.toLower(), instance.toLower()};
    for (const QString &candidate : wanted) {
        for (const Entry &entry : std::as_const(m_entries)) {
            if (!candidate.isEmpty() && entry.wmClass == candidate)
                return &entry;
        }
    }
    // Without StartupWMClass, entries are usually named after the class: "org.gnome.Foo"
    // or "foo" for class "Foo".
    for (const QString &candidate : wanted) {
        for (const Entry &entry : std::as_const(m_entries)) {
            if (!candidate.isEmpty()
                && (entry.id == candidate || entry.id.section(u'.', -1) == candidate))
                return &entry;
        }
    }
    return nullptr;
}

void DesktopApplicationNames::load()
{
    if (m_loaded)
        return;
    m_loaded = true;
    QSet<QString> seen; // earlier directories (the user's own) win
    for (const QString &directory : std::as_const(m_directories)) {
        QDirIterator files(directory, {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            const QString id = files.fileInfo().completeBaseName().toLower();
            if (seen.contains(id))
                continue;
            seen.insert(id);
            const QHash<QString, QString> keys = desktopEntryKeys(path);
            const QString name = localizedName(keys, m_locale);
            if (name.isEmpty() || keys.value(QStringLiteral("Type")) != QLatin1String("Application"))
                continue;
            const QStringList categories = keys.value(QStringLiteral("Categories")).split(u';');
            m_entries.append({id, keys.value(QStringLiteral("StartupWMClass")).toLower(), name,
                              categories.contains(QLatin1String("TerminalEmulator"))});
        }
    }
}
