#pragma once

#include <QByteArray>
#include <QClipboard>
#include <QList>
#include <QString>
#include <utility>

// Every format the clipboard (or the primary selection) held, with its raw bytes, so it
// can be put back as it was.
struct PasteboardSnapshot {
    QList<std::pair<QString, QByteArray>> formats;

    [[nodiscard]] static PasteboardSnapshot capture(const QClipboard &clipboard,
                                                    QClipboard::Mode mode = QClipboard::Clipboard);
    // Clears the clipboard when the snapshot is empty, so it never keeps the transcript.
    void restore(QClipboard &clipboard, QClipboard::Mode mode = QClipboard::Clipboard) const;

    friend bool operator==(const PasteboardSnapshot &, const PasteboardSnapshot &) = default;
};
