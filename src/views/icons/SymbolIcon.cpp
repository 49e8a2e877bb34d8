#include "SymbolIcon.h"

#include <QHash>
#include <QPainter>

namespace {

struct Mapping {
    const char *freedesktop;
    const char *bundled; // file name under :/Quorla/Views/icons/
};

const QHash<QString, Mapping> &mappings()
{
    static const QHash<QString, Mapping> table{
        {QStringLiteral("waveform.mid"), {"audio-input-microphone-symbolic", "waveform.svg"}},
        {QStringLiteral("book.closed"), {"accessories-dictionary-symbolic", "book-closed.svg"}},
        {QStringLiteral("gearshape"), {"preferences-system-symbolic", "gear.svg"}},
        {QStringLiteral("arrow.turn.down.right"), {"go-next-symbolic", "arrow-turn.svg"}},
        {QStringLiteral("questionmark.circle"), {"help-browser-symbolic", "question.svg"}},
        {QStringLiteral("key.fill"), {"dialog-password-symbolic", "key.svg"}},
        {QStringLiteral("xmark"), {"window-close-symbolic", "xmark.svg"}},
        {QStringLiteral("creditcard"), {"auth-smartcard-symbolic", "creditcard.svg"}},
        {QStringLiteral("book"), {"help-contents-symbolic", "book-open.svg"}},
        {QStringLiteral("exclamationmark.triangle.fill"), {"dialog-warning-symbolic", "warning.svg"}},
        {QStringLiteral("doc.on.doc"), {"edit-copy-symbolic", "copy.svg"}},
    };
    return table;
}

} // namespace

QString SymbolIcon::freedesktopName(const QString &symbol)
{
    const auto found = mappings().constFind(symbol);
    return found == mappings().constEnd() ? QString() : QString::fromLatin1(found->freedesktop);
}

QString SymbolIcon::bundledPath(const QString &symbol)
{
    const auto found = mappings().constFind(symbol);
    return found == mappings().constEnd() ? QString()
                                          : QStringLiteral(":/Quorla/Views/icons/") + QLatin1String(found->bundled);
}

QIcon SymbolIcon::icon(const QString &symbol)
{
    const QIcon bundled(bundledPath(symbol));
    const QString name = freedesktopName(symbol);
    return name.isEmpty() ? bundled : QIcon::fromTheme(name, bundled);
}

QPixmap SymbolIcon::tintedPixmap(const QString &symbol, int size, const QColor &color)
{
    QPixmap pixmap = icon(symbol).pixmap(size, size);
    if (pixmap.isNull() || !color.isValid())
        return pixmap;
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}
