#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

// One finished dictation kept in the in-memory history.
struct TranscriptEntry {
    QUuid id;
    QString text;
    QDateTime createdAt;

    friend bool operator==(const TranscriptEntry &, const TranscriptEntry &) = default;
};
