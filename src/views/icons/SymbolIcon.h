#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

// The interface names its pictures by symbol ("waveform.mid", "book.closed"). Each
// symbol maps once to a freedesktop icon name, with a bundled SVG for themes that
// lack it, so the pictures look right under any icon theme.
namespace SymbolIcon {

// The freedesktop name, or empty for an unknown symbol.
QString freedesktopName(const QString &symbol);
// The bundled fallback in the resource, or empty for an unknown symbol.
QString bundledPath(const QString &symbol);
// The theme's icon, else the bundled one.
QIcon icon(const QString &symbol);
// A monochrome picture in the given colour (symbolic icons are drawn single-colour).
QPixmap tintedPixmap(const QString &symbol, int size, const QColor &color);

} // namespace SymbolIcon
