#pragma once

#include "platform/Clipboard.h"

#include <QCoro/QCoroTask>

// Every format the clipboard (or the primary selection) held, with its raw bytes, so it
// can be put back as it was.
struct PasteboardSnapshot {
    ClipboardFormats formats;

    [[nodiscard]] static QCoro::Task<PasteboardSnapshot> capture(std::shared_ptr<Clipboard> clipboard,
                                                                 Clipboard::Selection selection);
    // Clears the clipboard when the snapshot is empty, so it never keeps the transcript.
    bool restore(Clipboard &clipboard, Clipboard::Selection selection) const;

    friend bool operator==(const PasteboardSnapshot &, const PasteboardSnapshot &) = default;
};
