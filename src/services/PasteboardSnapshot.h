#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <utility>

class QClipboard;

// Every format the clipboard held, with its raw bytes, so it can be put back as it was.
struct PasteboardSnapshot {
    QList<std::pair<QString, QByteArray>> formats;

    [[nodiscard]] static PasteboardSnapshot capture(const QClipboard &clipboard);
    // Clears the clipboard when the snapshot is empty, so it never keeps the transcript.
    void restore(QClipboard &clipboard) const;

    friend bool operator==(const PasteboardSnapshot &, const PasteboardSnapshot &) = default;
};
