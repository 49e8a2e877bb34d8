#pragma once

#include <QDateTime>
#include <QString>

// How one history entry reads in the tray menu: a one-line title and its time.
namespace RecentDictationMenuItem {

inline constexpr int maxRecentMenuEntries = 5;

// Whitespace folded to single spaces and trimmed; 31 characters or more are cut to
// 29 plus "…"; blank text reads "Untitled dictation".
QString titleText(const QString &text);

// The time of day in the locale's short format.
QString timeText(const QDateTime &createdAt);

} // namespace RecentDictationMenuItem
