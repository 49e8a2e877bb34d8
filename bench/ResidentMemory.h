#pragma once

#include <QByteArray>
#include <QFile>

// Resident memory, the part of it that is this process's own data (anonymous: heap,
// stacks, caches) rather than mapped library code, and its fair share of pages it
// shares with other programs.
inline QByteArray residentMemory()
{
    QFile rollup(QStringLiteral("/proc/self/smaps_rollup"));
    if (!rollup.open(QIODevice::ReadOnly))
        return "unknown";
    double rss = 0, pss = 0, owned = 0;
    for (const QByteArray &line : rollup.readAll().split('\n')) {
        const double kilobytes = line.mid(line.indexOf(':') + 1).trimmed().split(' ').value(0).toDouble();
        if (line.startsWith("Rss:"))
            rss = kilobytes;
        else if (line.startsWith("Pss:"))
            pss = kilobytes;
        else if (line.startsWith("Anonymous:"))
            owned = kilobytes;
    }
    return QByteArray::number(rss / 1024, 'f', 1) + " MB (own data " + QByteArray::number(owned / 1024, 'f', 1)
         + " MB, proportional " + QByteArray::number(pss / 1024, 'f', 1) + " MB)";
}
