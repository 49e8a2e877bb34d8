#pragma once

#include <QDataStream>
#include <QDateTime>
#include <QString>
#include <QUuid>

// One finished dictation kept in the in-memory history.
struct TranscriptEntry {
    QUuid id;
    QString text;
    QDateTime createdAt;

    friend bool operator==(const TranscriptEntry &, const TranscriptEntry &) = default;
    // Carried to the window's process.
    friend QDataStream &operator<<(QDataStream &out, const TranscriptEntry &entry)
    {
        return out << entry.id << entry.text << entry.createdAt;
    }
    friend QDataStream &operator>>(QDataStream &in, TranscriptEntry &entry)
    {
        return in >> entry.id >> entry.text >> entry.createdAt;
    }
};
