#pragma once

#include "platform/Clipboard.h"

#include <memory>

class WaylandConnection;

// The clipboard and primary selection through the compositor's data-control protocol
// (ext-data-control-v1 where offered, else wlroots' zwlr_data_control_v1): it works without a
// focused window, where Qt's clipboard is refused. What Quorla puts on a selection is served
// from this process while it holds the selection.
class WaylandClipboard : public Clipboard
{
public:
    // Null when the compositor offers no data control or no seat.
    static std::shared_ptr<WaylandClipboard> create(const std::shared_ptr<WaylandConnection> &connection);
    ~WaylandClipboard() override;

    QCoro::Task<ClipboardFormats> read(Selection selection) override;
    bool writeText(Selection selection, const QString &text, bool keepOutOfHistory) override;
    bool write(Selection selection, const ClipboardFormats &formats) override;
    bool hasPrimarySelection() override;
    bool holdsText(Selection selection, const QString &text) override;

    class Protocol;

private:
    explicit WaylandClipboard(std::unique_ptr<Protocol> protocol);

    std::unique_ptr<Protocol> m_protocol;
};
