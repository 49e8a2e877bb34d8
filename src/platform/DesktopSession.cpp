#include "DesktopSession.h"

SessionBackends chosenBackends(const DesktopSession &session)
{
    using B = SessionBackends;
    B backends;
    if (!session.wayland) {
        if (session.x11)
            backends = {B::Trigger::x11, B::Keys::x11, B::Clipboard::qt, B::Workspace::x11, B::Layout::xkb};
        return backends;
    }

    // Xwayland's keyboard layout is not the session's: no hint beats a wrong one.
    backends.layout = session.swayIpc ? B::Layout::sway : B::Layout::kde;

    if (session.globalShortcutsPortal > 0)
        backends.trigger = B::Trigger::globalShortcutsPortal;
    else if (session.swayIpc)
        backends.trigger = B::Trigger::sway;
    else if (session.x11)
        backends.trigger = B::Trigger::xwaylandOnly;

    if (session.virtualKeyboard)
        backends.keys = B::Keys::virtualKeyboard;
    else if (session.kdeFakeInput)
        backends.keys = B::Keys::kdeFakeInput;
    else if (session.remoteDesktopPortal > 0)
        backends.keys = B::Keys::remoteDesktopPortal;
    else if (session.x11)
        backends.keys = B::Keys::xwaylandOnly;

    // Qt's clipboard can't be set from the background on Wayland: only data-control can.
    if (session.wlrDataControl || session.extDataControl)
        backends.clipboard = B::Clipboard::dataControl;
    return backends;
}

QString describedSession(const DesktopSession &session)
{
    if (!session.wayland)
        return session.x11 ? QStringLiteral("X11") : QStringLiteral("no graphical session");
    QString words = session.swayIpc ? QStringLiteral("Wayland (sway)") : QStringLiteral("Wayland");
    if (session.x11)
        words += QStringLiteral(" with Xwayland");
    return words;
}

QString describedTrigger(SessionBackends::Trigger trigger)
{
    switch (trigger) {
    case SessionBackends::Trigger::x11:
        return QStringLiteral("X11 XInput2 raw key events");
    case SessionBackends::Trigger::sway:
        return QStringLiteral("sway key bindings");
    case SessionBackends::Trigger::globalShortcutsPortal:
        return QStringLiteral("the desktop's global shortcuts");
    case SessionBackends::Trigger::xwaylandOnly:
        return QStringLiteral("X11 key events, seen only while an X11 window has focus");
    case SessionBackends::Trigger::commandOnly:
        break;
    }
    return QStringLiteral("none, only the dictation command works");
}
