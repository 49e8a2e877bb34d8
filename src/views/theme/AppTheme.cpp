#include "AppTheme.h"

#include <QEvent>
#include <QGuiApplication>

namespace {

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(float(alpha));
    return color;
}

} // namespace

AppTheme::AppTheme(QObject *parent)
    : QObject(parent)
{
    updateFromPalette();
    qGuiApp->installEventFilter(this);
}

bool AppTheme::isDarkPalette(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5;
}

bool AppTheme::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange)
        updateFromPalette();
    return QObject::eventFilter(watched, event);
}

void AppTheme::updateFromPalette()
{
    const bool dark = isDarkPalette(QGuiApplication::palette());
    if (dark == m_isDark)
        return;
    m_isDark = dark;
    Q_EMIT changed();
}

QColor AppTheme::pageBackground() const
{
    return pick(0xf6f7f9, 0x1c1d21);
}
QColor AppTheme::surface() const
{
    return pick(0xffffff, 0x26282d);
}
QColor AppTheme::secondarySurface() const
{
    return pick(0xeef0f3, 0x2f3238);
}
QColor AppTheme::border() const
{
    return pick(0xdde0e5, 0x3b3e45);
}
QColor AppTheme::accent() const
{
    return pick(0x3d5afe, 0x8c9eff);
}
QColor AppTheme::accentMutedBackground() const
{
    return withAlpha(accent(), m_isDark ? 0.18 : 0.10);
}
QColor AppTheme::accentMutedBorder() const
{
    return withAlpha(accent(), 0.28);
}
QColor AppTheme::heroTitle() const
{
    return pick(0x16181d, 0xf3f4f6);
}
QColor AppTheme::metricValue() const
{
    return pick(0x1f2a5c, 0xdfe4ff);
}
QColor AppTheme::primaryText() const
{
    return pick(0x1b1d22, 0xeceef2);
}
QColor AppTheme::secondaryText() const
{
    return pick(0x5d626d, 0xa2a7b1);
}
QColor AppTheme::disabledText() const
{
    return pick(0xa3a7b0, 0x63676f);
}
QColor AppTheme::warningSymbol() const
{
    return pick(0xe07800, 0xff9f2e);
}
QColor AppTheme::scrim() const
{
    return withAlpha(QColor(Qt::black), m_isDark ? 0.55 : 0.32);
}

QColor AppTheme::toneText(const QString &tone) const
{
    if (tone == QLatin1String("success"))
        return pick(0x1e8a3a, 0x4cd471);
    if (tone == QLatin1String("warning"))
        return warningSymbol();
    return accent();
}

QColor AppTheme::toneBackground(const QString &tone) const
{
    if (tone == QLatin1String("active"))
        return accentMutedBackground();
    return withAlpha(toneText(tone), 0.12);
}

QColor AppTheme::toneBorder(const QString &tone) const
{
    if (tone == QLatin1String("active"))
        return accentMutedBorder();
    return withAlpha(toneText(tone), 0.18);
}

QUrl AppTheme::symbolSource(const QString &symbol, const QColor &tint)
{
    if (symbol.isEmpty())
        return QUrl();
    // The colour goes without its "#", which would start the address's fragment.
    return QUrl(QStringLiteral("image://symbol/%1?color=%2").arg(symbol, tint.name(QColor::HexRgb).mid(1)));
}
