#pragma once

// Plain C++ over Xlib's XKB calls: Xlib's macros (Bool, Status, None) break Qt and
// gtest headers, so nothing here names an X type.

#include <memory>
#include <optional>
#include <string>

// The keyboard group the X server has selected, with the layout the rules gave it.
struct XkbLayoutState {
    unsigned group = 0;
    std::string layout;    // "de" from the rules' "us,de"
    std::string variant;   // "nodeadkeys", or empty
    std::string groupName; // the keymap's own name of the group, e.g. "German"
};

// Its own X connection, watching the keyboard group and the layout list.
class XkbKeyboardConnection
{
public:
    // Absent when there is no X display or it lacks XKB.
    static std::unique_ptr<XkbKeyboardConnection> open();
    ~XkbKeyboardConnection();
    XkbKeyboardConnection(const XkbKeyboardConnection &) = delete;
    XkbKeyboardConnection &operator=(const XkbKeyboardConnection &) = delete;

    // Readable when events arrive; the caller then calls takeLayoutChanges().
    [[nodiscard]] int fileDescriptor() const;
    // Absent when the server names no layouts.
    [[nodiscard]] std::optional<XkbLayoutState> currentLayout();
    // Reads every pending event; true when one of them may have changed the layout.
    bool takeLayoutChanges();
    // Events Xlib already read from the socket while answering a request: the
    // socket will not signal them again.
    [[nodiscard]] bool hasQueuedEvents();
    // Selects a keyboard group, as a group-switch key would.
    bool lockGroup(unsigned group);

private:
    struct Connection;
    explicit XkbKeyboardConnection(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> m_connection;
};
