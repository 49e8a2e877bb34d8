// Transcript history and typing statistics.
#include "AppModel.h"

void AppModel::recordInsertedTranscript(const QString &transcript)
{
    Q_UNUSED(transcript)
}

void AppModel::persistTypingStatistics() {}

void AppModel::copyTranscript(const TranscriptEntry &entry)
{
    Q_UNUSED(entry)
}

void AppModel::clearTranscript() {}
