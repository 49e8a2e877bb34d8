#pragma once

#include <QString>
#include <QtGlobal>

// Texts of the Home page computed from the model's numbers.
namespace HomeDisplay {

// Typing at 40 words a minute against speaking at 130: "0 sec", "21 sec", "2m", "1h 5m".
QString estimatedTimeSavedText(qint64 typedWordCount);

// "3 saved": how many transcripts the history holds.
QString transcriptSummaryText(qsizetype count);

} // namespace HomeDisplay
