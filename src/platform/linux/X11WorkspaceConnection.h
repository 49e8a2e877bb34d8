#pragma once

// The windows of the X display, seen through EWMH. Plain C++: the implementation
// includes Xlib, whose macros cannot meet Qt.

#include <memory>
#include <optional>
#include <string>

class X11WorkspaceConnection
{
public:
    using WindowId = unsigned long;
    struct WindowClass {
        std::string instance;
        std::string className;
    };

    // A connection of its own to $DISPLAY; null when there is no display.
    static std::shared_ptr<X11WorkspaceConnection> open();
    ~X11WorkspaceConnection();
    X11WorkspaceConnection(const X11WorkspaceConnection &) = delete;
    X11WorkspaceConnection &operator=(const X11WorkspaceConnection &) = delete;

    // The window the window manager calls active; 0 when none.
    WindowId activeWindow();
    // _NET_WM_PID; 0 when the window has none or is gone.
    long processId(WindowId window);
    // WM_CLASS; absent when the window has none or is gone.
    std::optional<WindowClass> windowClass(WindowId window);
    // Asks the window manager to activate the window, as a pager would; false when the
    // window is gone or the request could not be sent.
    bool activate(WindowId window);

private:
    struct Impl;
    explicit X11WorkspaceConnection(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};
