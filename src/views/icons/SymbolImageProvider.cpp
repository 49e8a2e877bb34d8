#include "SymbolImageProvider.h"

#include "views/icons/SymbolIcon.h"

#include <QUrlQuery>

SymbolImageProvider::SymbolImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Pixmap)
{
}

QPixmap SymbolImageProvider::requestPixmap(const QString &id, QSize *size, const QSize &requestedSize)
{
    const qsizetype query = id.indexOf(QLatin1Char('?'));
    const QString symbol = id.left(query);
    // The colour comes without its "#", which would start a URL fragment.
    const QString hex = query < 0 ? QString() : QUrlQuery(id.mid(query + 1)).queryItemValue(QStringLiteral("color"));
    const QColor color(hex.isEmpty() ? QString() : QLatin1Char('#') + hex);
    const int edge = requestedSize.isValid() ? std::max(requestedSize.width(), requestedSize.height()) : 16;
    QPixmap pixmap = SymbolIcon::tintedPixmap(symbol, std::max(edge, 1), color);
    if (size)
        *size = pixmap.size();
    return pixmap;
}
