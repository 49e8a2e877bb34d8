#pragma once

#include <QString>
#include <optional>

// An exact term (no replacement) or a replacement rule of the custom dictionary.
struct CustomDictionaryEntry {
    QString term;
    std::optional<QString> replacement;

    friend bool operator==(const CustomDictionaryEntry &, const CustomDictionaryEntry &) = default;
};
