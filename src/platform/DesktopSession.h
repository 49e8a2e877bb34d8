#pragma once

#include <QString>

// What the desktop session offers, found by asking its servers rather than trusting its
// variables: sway sets DISPLAY even without Xwayland.
struct DesktopSession {
    bool x11 = false;     // an X server accepted a connection (an X11 session, or Xwayland)
    bool wayland = false; // a Wayland compositor answered
    bool swayIpc = false; // sway's IPC socket is there
    // Wayland globals the compositor lists.
    bool wlrDataControl = false;  // zwlr_data_control_manager_v1
    bool extDataControl = false;  // ext_data_control_manager_v1
    bool virtualKeyboard = false; // zwp_virtual_keyboard_manager_v1
    bool kdeFakeInput = false;    // org_kde_kwin_fake_input
    // Interface versions of the desktop portals; 0 when none answers.
    int globalShortcutsPortal = 0;
    int remoteDesktopPortal = 0;

    friend bool operator==(const DesktopSession &, const DesktopSession &) = default;
};

// Which backend serves each seam in a session: the first of each list that the session
// offers. Everything outside X11 windows needs Wayland's own routes.
struct SessionBackends {
    enum class Trigger { x11,
                         sway,
                         globalShortcutsPortal,
                         xwaylandOnly,
                         commandOnly };
    enum class Keys { x11,
                      virtualKeyboard,
                      kdeFakeInput,
                      remoteDesktopPortal,
                      xwaylandOnly,
                      none };
    // none: nothing from the background; only a focused window of Quorla's sets it.
    enum class Clipboard { qt,
                           dataControl,
                           none };
    enum class Workspace { x11,
                           accessibility };
    // Where the keyboard layout (and so the input language hint) comes from; kde asks
    // Plasma's layout service, which elsewhere simply doesn't answer.
    enum class Layout { xkb,
                        sway,
                        kde,
                        none };

    Trigger trigger = Trigger::commandOnly;
    Keys keys = Keys::none;
    Clipboard clipboard = Clipboard::none;
    Workspace workspace = Workspace::accessibility;
    Layout layout = Layout::none;

    friend bool operator==(const SessionBackends &, const SessionBackends &) = default;
};

[[nodiscard]] SessionBackends chosenBackends(const DesktopSession &session);

// "Wayland (sway) with Xwayland", "X11", "no graphical session".
[[nodiscard]] QString describedSession(const DesktopSession &session);
// How the trigger is watched, for the doctor and Settings: "sway key bindings", ...
[[nodiscard]] QString describedTrigger(SessionBackends::Trigger trigger);
