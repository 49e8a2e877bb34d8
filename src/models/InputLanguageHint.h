#pragma once

#include <QDataStream>
#include <QString>

// The language of the selected keyboard input source.
struct InputLanguageHint {
    QString code;        // lower-case ISO 639-1
    QString displayName;

    friend bool operator==(const InputLanguageHint &, const InputLanguageHint &) = default;
    // Carried to the window's process.
    friend QDataStream &operator<<(QDataStream &out, const InputLanguageHint &hint)
    {
        return out << hint.code << hint.displayName;
    }
    friend QDataStream &operator>>(QDataStream &in, InputLanguageHint &hint)
    {
        return in >> hint.code >> hint.displayName;
    }
};
