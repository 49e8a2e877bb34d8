// Xlib only: no Qt, no gtest in this file.
#include "X11WorkspaceConnection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

int trappedErrorCode = 0;

int trapError(Display *, XErrorEvent *event)
{
    trappedErrorCode = event->error_code;
    return 0;
}

// Windows come and go under us (and ids are reused): an error about one is an answer,
// not a reason for Xlib's default handler to end the process.
class ErrorTrap
{
public:
    explicit ErrorTrap(Display *display)
        : m_display(display)
    {
        XSync(m_display, False);
        trappedErrorCode = 0;
        m_previous = XSetErrorHandler(trapError);
    }
    ~ErrorTrap() { finish(); }
    ErrorTrap(const ErrorTrap &) = delete;
    ErrorTrap &operator=(const ErrorTrap &) = delete;

    // True when any request since the trap was set failed.
    bool failed()
    {
        finish();
        return m_failed;
    }

private:
    void finish()
    {
        if (m_finished)
            return;
        XSync(m_display, False);
        m_failed = trappedErrorCode != 0;
        XSetErrorHandler(m_previous);
        m_finished = true;
    }

    Display *m_display;
    XErrorHandler m_previous = nullptr;
    bool m_finished = false;
    bool m_failed = false;
};

Bool isPropertyNotifyOn(Display *, XEvent *event, XPointer window)
{
    return event->type == PropertyNotify && event->xproperty.window == *reinterpret_cast<Window *>(window);
}

} // namespace

struct X11WorkspaceConnection::Impl {
    Display *display = nullptr;
    Window root = 0;
    Window timestampWindow = 0;
    Atom activeWindowAtom = 0;
    Atom pidAtom = 0;
    Atom timestampAtom = 0;

    ~Impl()
    {
        if (timestampWindow)
            XDestroyWindow(display, timestampWindow);
        XCloseDisplay(display);
    }

    std::optional<unsigned long> cardinalProperty(Window window, Atom property, Atom type)
    {
        ErrorTrap trap(display);
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long remaining = 0;
        unsigned char *data = nullptr;
        const int status = XGetWindowProperty(display, window, property, 0, 1, False, type, &actualType,
                                              &format, &count, &remaining, &data);
        std::optional<unsigned long> value;
        if (status == Success && data && actualType == type && format == 32 && count == 1)
            value = *reinterpret_cast<unsigned long *>(data); // Xlib hands 32-bit items as longs
        if (data)
            XFree(data);
        if (trap.failed())
            return std::nullopt;
        return value;
    }

    // A server timestamp, as the user's own actions carry: a zero-length append to a
    // private window comes back as a PropertyNotify stamped with the server time.
    Time serverTime()
    {
        if (!timestampWindow) {
            XSetWindowAttributes attributes{};
            attributes.event_mask = PropertyChangeMask;
            timestampWindow = XCreateWindow(display, root, -1, -1, 1, 1, 0, 0, InputOnly, CopyFromParent,
                                            CWEventMask, &attributes);
        }
        XChangeProperty(display, timestampWindow, timestampAtom, XA_STRING, 8, PropModeAppend, nullptr, 0);
        XEvent event;
        XIfEvent(display, &event, isPropertyNotifyOn, reinterpret_cast<XPointer>(&timestampWindow));
        return event.xproperty.time;
    }
};

std::shared_ptr<X11WorkspaceConnection> X11WorkspaceConnection::open()
{
    Display *display = XOpenDisplay(nullptr);
    if (!display)
        return nullptr;
    auto impl = std::make_unique<Impl>();
    impl->display = display;
    impl->root = DefaultRootWindow(display);
    impl->activeWindowAtom = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    impl->pidAtom = XInternAtom(display, "_NET_WM_PID", False);
    impl->timestampAtom = XInternAtom(display, "_QUORLA_TIMESTAMP", False);
    return std::shared_ptr<X11WorkspaceConnection>(new X11WorkspaceConnection(std::move(impl)));
}

X11WorkspaceConnection::X11WorkspaceConnection(std::unique_ptr<Impl> impl)
    : d(std::move(impl))
{
}

X11WorkspaceConnection::~X11WorkspaceConnection() = default;

X11WorkspaceConnection::WindowId X11WorkspaceConnection::activeWindow()
{
    return d->cardinalProperty(d->root, d->activeWindowAtom, XA_WINDOW).value_or(0);
}

long X11WorkspaceConnection::processId(WindowId window)
{
    if (!window)
        return 0;
    return static_cast<long>(d->cardinalProperty(window, d->pidAtom, XA_CARDINAL).value_or(0));
}

std::optional<X11WorkspaceConnection::WindowClass> X11WorkspaceConnection::windowClass(WindowId window)
{
    if (!window)
        return std::nullopt;
    ErrorTrap trap(d->display);
    XClassHint hint{};
    const Status status = XGetClassHint(d->display, window, &hint);
    std::optional<WindowClass> result;
    if (status) {
        result = WindowClass{hint.res_name ? hint.res_name : "", hint.res_class ? hint.res_class : ""};
    }
    if (hint.res_name)
        XFree(hint.res_name);
    if (hint.res_class)
        XFree(hint.res_class);
    if (trap.failed())
        return std::nullopt;
    return result;
}

bool X11WorkspaceConnection::activate(WindowId window)
{
    if (!window)
        return false;
    {
        ErrorTrap trap(d->display);
        XWindowAttributes attributes;
        XGetWindowAttributes(d->display, window, &attributes);
        if (trap.failed())
            return false;
    }
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = d->activeWindowAtom;
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2; // source: a pager, acting for the user
    event.xclient.data.l[1] = static_cast<long>(d->serverTime());
    event.xclient.data.l[2] = 0;
    ErrorTrap trap(d->display);
    const Status sent = XSendEvent(d->display, d->root, False,
                                   SubstructureRedirectMask | SubstructureNotifyMask, &event);
    return sent && !trap.failed();
}
