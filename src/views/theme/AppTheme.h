#pragma once

#include <QColor>
#include <QObject>
#include <QPalette>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// The named colours of every page, light or dark after the desktop's palette.
class AppTheme : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    Q_PROPERTY(QColor pageBackground READ pageBackground NOTIFY changed)
    Q_PROPERTY(QColor surface READ surface NOTIFY changed)
    Q_PROPERTY(QColor secondarySurface READ secondarySurface NOTIFY changed)
    Q_PROPERTY(QColor border READ border NOTIFY changed)
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    Q_PROPERTY(QColor accentMutedBackground READ accentMutedBackground NOTIFY changed)
    Q_PROPERTY(QColor accentMutedBorder READ accentMutedBorder NOTIFY changed)
    Q_PROPERTY(QColor heroTitle READ heroTitle NOTIFY changed)
    Q_PROPERTY(QColor metricValue READ metricValue NOTIFY changed)
    Q_PROPERTY(QColor primaryText READ primaryText NOTIFY changed)
    Q_PROPERTY(QColor secondaryText READ secondaryText NOTIFY changed)
    Q_PROPERTY(QColor disabledText READ disabledText NOTIFY changed)
    Q_PROPERTY(QColor warningSymbol READ warningSymbol NOTIFY changed)
    Q_PROPERTY(QColor scrim READ scrim NOTIFY changed)

public:
    explicit AppTheme(QObject *parent = nullptr);

    // Dark when the palette's window colour is closer to black than to white
    // (Qt 6.4 has no colour-scheme hint).
    static bool isDarkPalette(const QPalette &palette);

    [[nodiscard]] bool isDark() const { return m_isDark; }
    [[nodiscard]] QColor pageBackground() const;
    [[nodiscard]] QColor surface() const;
    [[nodiscard]] QColor secondarySurface() const;
    [[nodiscard]] QColor border() const;
    [[nodiscard]] QColor accent() const;
    [[nodiscard]] QColor accentMutedBackground() const;
    [[nodiscard]] QColor accentMutedBorder() const;
    [[nodiscard]] QColor heroTitle() const;
    [[nodiscard]] QColor metricValue() const;
    [[nodiscard]] QColor primaryText() const;
    [[nodiscard]] QColor secondaryText() const;
    [[nodiscard]] QColor disabledText() const;
    [[nodiscard]] QColor warningSymbol() const;
    // What dims the window behind a sheet.
    [[nodiscard]] QColor scrim() const;

    // A StatusPill's colours for its tone ("success", "warning", "active").
    Q_INVOKABLE QColor toneText(const QString &tone) const;
    Q_INVOKABLE QColor toneBackground(const QString &tone) const;
    Q_INVOKABLE QColor toneBorder(const QString &tone) const;
    // The image address of a symbol drawn in a colour, for an Image or a button's icon.
    Q_INVOKABLE static QUrl symbolSource(const QString &symbol, const QColor &tint);

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] QColor pick(QRgb light, QRgb dark) const { return QColor::fromRgb(m_isDark ? dark : light); }
    void updateFromPalette();

    bool m_isDark = false;
};
