#include "HomeDisplay.h"

#include <QStringList>
#include <cmath>

namespace {

// Days, hours and minutes in the abbreviated style, at most two units, zero units
// dropped; the smallest unit shown is rounded.
QString abbreviatedDuration(double seconds)
{
    qint64 minutes = std::llround(seconds / 60.0);
    qint64 days = minutes / (qint64(24) * 60);
    qint64 hours = minutes / 60 % 24;
    qint64 rest = minutes % 60;
    if (days > 0 && hours > 0 && rest > 0) {
        // Three units: round away the minutes.
        const qint64 totalHours = std::llround(minutes / 60.0);
        days = totalHours / 24;
        hours = totalHours % 24;
        rest = 0;
    }
    QStringList parts;
    if (days > 0)
        parts << QStringLiteral("%1d").arg(days);
    if (hours > 0)
        parts << QStringLiteral("%1h").arg(hours);
    if (rest > 0 && parts.size() < 2)
        parts << QStringLiteral("%1m").arg(rest);
    return parts.join(QLatin1Char(' '));
}

} // namespace

QString HomeDisplay::estimatedTimeSavedText(qint64 typedWordCount)
{
    if (typedWordCount < 1)
        return QStringLiteral("0 sec");
    const double words = double(typedWordCount);
    const double minutes = std::max(0.0, words / 40.0 - words / 130.0);
    const double seconds = minutes * 60.0;
    if (seconds < 60.0)
        return QStringLiteral("%1 sec").arg(std::llround(seconds));
    const QString text = abbreviatedDuration(seconds);
    return text.isEmpty() ? QStringLiteral("0 sec") : text;
}

QString HomeDisplay::transcriptSummaryText(qsizetype count)
{
    return QStringLiteral("%1 saved").arg(count);
}
