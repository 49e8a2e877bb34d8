#pragma once

#include <QString>

// Models sometimes end a transcript, a polished text or a translation with an offer
// ("Let me know if you'd like any changes."). The text without such trailing offers,
// stacked ones included, trimmed; a phrase followed by further words stays.
QString normalizedWithoutFollowUpPhrases(const QString &trimmedText);
