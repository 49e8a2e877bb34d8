#pragma once

#include "platform/InputSourceProvider.h"

#include <memory>

class QSocketNotifier;
class XkbKeyboardConnection;

// The selected XKB group as an input source: "xkb:<layout>[:<variant>]", named and
// given languages by xkeyboard-config. Change notices come from the X server's
// keyboard events, read on the main thread from their own X connection.
class XkbInputSourceProvider : public InputSourceProvider
{
public:
    // Without an X display every source reads as absent and no notice ever comes.
    XkbInputSourceProvider();
    ~XkbInputSourceProvider() override;

    std::optional<InputSourceInfo> currentInputSource() override;
    void startObservingChanges(std::function<void()> onChange) override;

private:
    void readEvents();
    // Events that arrived while a request was answered sit in Xlib's queue, where
    // the socket notifier cannot see them.
    void scheduleQueuedEvents();

    std::unique_ptr<XkbKeyboardConnection> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_onChange;
    std::optional<InputSourceInfo> m_lastSource;
};
