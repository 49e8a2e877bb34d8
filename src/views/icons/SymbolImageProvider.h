#pragma once

#include <QQuickImageProvider>

// "image://symbol/<symbol>?color=<rrggbb>": a symbol tinted for the page it sits on.
class SymbolImageProvider : public QQuickImageProvider
{
public:
    SymbolImageProvider();
    QPixmap requestPixmap(const QString &id, QSize *size, const QSize &requestedSize) override;
};
