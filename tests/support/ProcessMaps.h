#pragma once

#include <QFile>

// Whether a file whose path contains name is mapped into this process: a library that
// was unloaded for good is not.
inline bool isMappedHere(const char *name)
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(name);
}
