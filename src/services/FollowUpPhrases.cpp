#include "FollowUpPhrases.h"

#include <QRegularExpression>
#include <array>

namespace {

// Each ends in "$", so a match always reaches the end of the text.
const std::array<QString, 6> followUpPatterns{
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?ask for follow-up changes[.!?"'”’\s]*$)"),
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?let me know if you'd like any changes[.!?"'”’\s]*$)"),
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?let me know if you would like any changes[.!?"'”’\s]*$)"),
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?let me know if you want any changes[.!?"'”’\s]*$)"),
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?would you like any changes[.!?"'”’\s]*$)"),
    QStringLiteral(R"((?is)\s*(?:[-–—:]\s*)?would you like me to make any changes[.!?"'”’\s]*$)"),
};

} // namespace

QString normalizedWithoutFollowUpPhrases(const QString &trimmedText)
{
    QString text = trimmedText;
    bool removed = true;
    while (removed) {
        removed = false;
        for (const QString &pattern : followUpPatterns) {
            // Unicode \s, as the patterns were written for.
            const QRegularExpression expression(pattern, QRegularExpression::UseUnicodePropertiesOption);
            if (!expression.isValid())
                continue;
            const QRegularExpressionMatch match = expression.match(text);
            if (!match.hasMatch())
                continue;
            text = text.left(match.capturedStart()).trimmed();
            removed = true;
            break;
        }
    }
    return text;
}
