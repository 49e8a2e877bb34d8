#include "RecentDictationMenuItem.h"

#include <QLocale>
#include <QRegularExpression>

QString RecentDictationMenuItem::titleText(const QString &text)
{
    static const QRegularExpression whitespace(QStringLiteral("\\s+"));
    QString title = text;
    title.replace(QLatin1Char('\n'), QLatin1Char(' '));
    title.replace(whitespace, QStringLiteral(" "));
    title = title.trimmed();
    if (title.isEmpty())
        return QStringLiteral("Untitled dictation");
    // Characters as the user sees them: never split a surrogate pair.
    const QList<uint> codePoints = title.toUcs4();
    if (codePoints.size() < 31)
        return title;
    QString cut = QString::fromUcs4(reinterpret_cast<const char32_t *>(codePoints.constData()), 29);
    while (!cut.isEmpty() && cut.back().isSpace())
        cut.chop(1);
    return cut + QChar(0x2026);
}

QString RecentDictationMenuItem::timeText(const QDateTime &createdAt)
{
    return QLocale().toString(createdAt.toLocalTime().time(), QLocale::ShortFormat);
}
