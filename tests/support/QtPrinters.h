#pragma once

#include <QString>
#include <QStringList>
#include <ostream>

// Readable failure messages for Qt strings in gtest assertions.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QStringList &texts, std::ostream *out)
{
    *out << '[';
    for (qsizetype i = 0; i < texts.size(); ++i)
        *out << (i ? ",\n  \"" : "\"") << texts[i].toStdString() << '"';
    *out << ']';
}
