#pragma once

#include <QDataStream>
#include <QString>
#include <optional>

// An exact term (no replacement) or a replacement rule of the custom dictionary.
struct CustomDictionaryEntry {
    QString term;
    std::optional<QString> replacement;

    friend bool operator==(const CustomDictionaryEntry &, const CustomDictionaryEntry &) = default;
    // Carried to the window's process.
    friend QDataStream &operator<<(QDataStream &out, const CustomDictionaryEntry &entry)
    {
        return out << entry.term << entry.replacement.has_value() << entry.replacement.value_or(QString());
    }
    friend QDataStream &operator>>(QDataStream &in, CustomDictionaryEntry &entry)
    {
        bool hasReplacement = false;
        QString replacement;
        in >> entry.term >> hasReplacement >> replacement;
        if (hasReplacement)
            entry.replacement = replacement;
        else
            entry.replacement.reset();
        return in;
    }
};
