#pragma once

#include <QString>
#include <array>

// The sections of the main window, in sidebar order; the raw value is the selection key.
enum class AppSection { home,
                        dictionary,
                        settings };

inline constexpr std::array allAppSections{AppSection::home, AppSection::dictionary, AppSection::settings};

inline QString rawValue(AppSection section)
{
    switch (section) {
    case AppSection::dictionary:
        return QStringLiteral("dictionary");
    case AppSection::settings:
        return QStringLiteral("settings");
    case AppSection::home:
        break;
    }
    return QStringLiteral("home");
}

inline QString sidebarTitle(AppSection section)
{
    switch (section) {
    case AppSection::dictionary:
        return QStringLiteral("Dictionary");
    case AppSection::settings:
        return QStringLiteral("Settings");
    case AppSection::home:
        break;
    }
    return QStringLiteral("Quorla");
}

// The symbol name; SymbolIcon maps it to the desktop's icon theme.
inline QString sidebarSymbol(AppSection section)
{
    switch (section) {
    case AppSection::dictionary:
        return QStringLiteral("book.closed");
    case AppSection::settings:
        return QStringLiteral("gearshape");
    case AppSection::home:
        break;
    }
    return QStringLiteral("waveform.mid");
}
