#pragma once

#include "Clipboard.h"

// Qt's clipboard: right for X11 (and other platforms Qt serves), wrong for a background
// process on Wayland, where compositors refuse it while Qt reports success.
class QtClipboard : public Clipboard
{
public:
    // Who may take the selection: anyone (X11), or only the window that has keyboard focus
    // (a Wayland compositor offering Quorla nothing better).
    enum class Writer { anyone,
                        focusedWindow };

    explicit QtClipboard(Writer writer = Writer::anyone)
        : m_writer(writer)
    {
    }

    QCoro::Task<ClipboardFormats> read(Selection selection) override;
    bool writeText(Selection selection, const QString &text, bool keepOutOfHistory) override;
    bool write(Selection selection, const ClipboardFormats &formats) override;
    bool hasPrimarySelection() override;
    bool holdsText(Selection selection, const QString &text) override;

private:
    // A write the desktop would drop is refused here, so nobody counts on it.
    [[nodiscard]] bool mayWrite() const;

    Writer m_writer;
};
