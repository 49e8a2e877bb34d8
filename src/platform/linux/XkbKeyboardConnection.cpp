#include "XkbKeyboardConnection.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <vector>

struct XkbKeyboardConnection::Connection {
    Display *display = nullptr;
    int xkbEventBase = 0;
    Atom rulesNamesAtom = 0;

    ~Connection()
    {
        if (display)
            XCloseDisplay(display);
    }
};

namespace {

std::vector<std::string> splitAtCommas(const std::string &list)
{
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (true) {
        const auto comma = list.find(',', start);
        parts.push_back(list.substr(start, comma == std::string::npos ? std::string::npos : comma - start));
        if (comma == std::string::npos)
            return parts;
        start = comma + 1;
    }
}

// _XKB_RULES_NAMES: rules, model, layouts, variants, options as NUL-separated strings.
std::vector<std::string> rulesNames(Display *display, Atom atom)
{
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long remaining = 0;
    unsigned char *data = nullptr;
    std::vector<std::string> fields;
    if (XGetWindowProperty(display, DefaultRootWindow(display), atom, 0, 4096, False, XA_STRING, &actualType, &format,
                           &count, &remaining, &data)
        != Success)
        return fields;
    if (data && actualType == XA_STRING && format == 8) {
        const char *text = reinterpret_cast<const char *>(data);
        std::string field;
        for (unsigned long i = 0; i < count; ++i) {
            if (text[i] == '\0') {
                fields.push_back(field);
                field.clear();
            } else {
                field.push_back(text[i]);
            }
        }
        fields.push_back(field);
    }
    if (data)
        XFree(data);
    return fields;
}

std::string groupName(Display *display, unsigned group)
{
    std::string name;
    XkbDescPtr keyboard = XkbAllocKeyboard();
    if (!keyboard)
        return name;
    keyboard->device_spec = XkbUseCoreKbd;
    if (XkbGetNames(display, XkbGroupNamesMask, keyboard) == Success && keyboard->names && group < XkbNumKbdGroups
        && keyboard->names->groups[group] != 0) {
        if (char *atomName = XGetAtomName(display, keyboard->names->groups[group])) {
            name = atomName;
            XFree(atomName);
        }
    }
    XkbFreeKeyboard(keyboard, 0, True);
    return name;
}

} // namespace

XkbKeyboardConnection::XkbKeyboardConnection(std::unique_ptr<Connection> connection)
    : m_connection(std::move(connection))
{
}

XkbKeyboardConnection::~XkbKeyboardConnection() = default;

std::unique_ptr<XkbKeyboardConnection> XkbKeyboardConnection::open()
{
    auto connection = std::make_unique<Connection>();
    connection->display = XOpenDisplay(nullptr);
    if (!connection->display)
        return nullptr;
    Display *display = connection->display;
    int opcode = 0;
    int errorBase = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    if (!XkbQueryExtension(display, &opcode, &connection->xkbEventBase, &errorBase, &major, &minor))
        return nullptr;
    connection->rulesNamesAtom = XInternAtom(display, "_XKB_RULES_NAMES", False);

    // Group switches, a new keymap (setxkbmap), renamed groups, and a rewritten
    // layout list each may change what the user types in.
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask, XkbGroupStateMask);
    const unsigned long keymapEvents = XkbNewKeyboardNotifyMask | XkbNamesNotifyMask;
    XkbSelectEvents(display, XkbUseCoreKbd, keymapEvents, keymapEvents);
    XSelectInput(display, DefaultRootWindow(display), PropertyChangeMask);
    XFlush(display);
    return std::unique_ptr<XkbKeyboardConnection>(new XkbKeyboardConnection(std::move(connection)));
}

int XkbKeyboardConnection::fileDescriptor() const
{
    return ConnectionNumber(m_connection->display);
}

std::optional<XkbLayoutState> XkbKeyboardConnection::currentLayout()
{
    Display *display = m_connection->display;
    XkbStateRec state{};
    if (XkbGetState(display, XkbUseCoreKbd, &state) != Success)
        return std::nullopt;
    const auto fields = rulesNames(display, m_connection->rulesNamesAtom);
    if (fields.size() < 3 || fields[2].empty())
        return std::nullopt;
    XkbLayoutState layout;
    layout.group = state.group;
    const auto layouts = splitAtCommas(fields[2]);
    const auto variants = fields.size() > 3 ? splitAtCommas(fields[3]) : std::vector<std::string>{};
    // The server wraps a group beyond the list back to the first one.
    const std::size_t index = layout.group < layouts.size() ? layout.group : 0;
    layout.layout = layouts[index];
    if (index < variants.size())
        layout.variant = variants[index];
    layout.groupName = groupName(display, layout.group);
    return layout;
}

bool XkbKeyboardConnection::takeLayoutChanges()
{
    Display *display = m_connection->display;
    bool changed = false;
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == m_connection->xkbEventBase) {
            const auto *xkb = reinterpret_cast<const XkbEvent *>(&event);
            switch (xkb->any.xkb_type) {
            case XkbStateNotify:
                changed = changed || (xkb->state.changed & XkbGroupStateMask) != 0;
                break;
            case XkbNewKeyboardNotify:
            case XkbNamesNotify:
                changed = true;
                break;
            default:
                break;
            }
        } else if (event.type == PropertyNotify && event.xproperty.atom == m_connection->rulesNamesAtom) {
            changed = true;
        }
    }
    return changed;
}

bool XkbKeyboardConnection::hasQueuedEvents()
{
    return XEventsQueued(m_connection->display, QueuedAlready) > 0;
}

bool XkbKeyboardConnection::lockGroup(unsigned group)
{
    const bool sent = XkbLockGroup(m_connection->display, XkbUseCoreKbd, group);
    XFlush(m_connection->display);
    return sent;
}
