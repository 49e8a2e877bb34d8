#pragma once

#include "Clipboard.h"

// Qt's clipboard: right for X11 (and other platforms Qt serves), wrong for a background
// process on Wayland, where compositors refuse it while Qt reports success.
class QtClipboard : public Clipboard
{
public:
    QCoro::Task<ClipboardFormats> read(Selection selection) override;
    bool writeText(Selection selection, const QString &text, bool keepOutOfHistory) override;
    bool write(Selection selection, const ClipboardFormats &formats) override;
    bool hasPrimarySelection() override;
    bool holdsText(Selection selection, const QString &text) override;
};
