#pragma once

#include <QString>

// The language of the selected keyboard input source.
struct InputLanguageHint {
    QString code; // lower-case ISO 639-1
    QString displayName;

    friend bool operator==(const InputLanguageHint &, const InputLanguageHint &) = default;
};
