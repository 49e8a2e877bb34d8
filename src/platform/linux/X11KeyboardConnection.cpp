// Xlib and xcb only: no Qt, no gtest in this file.
#include "X11KeyboardConnection.h"

#include "platform/linux/X11SynthesizedKeys.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h> // xcb_poll_for_reply

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <poll.h>

namespace {

constexpr int badAccess = 10;
constexpr int modifierCombinations = 256; // Shift, Lock, Control, Mod1..Mod5

bool endsWith(const char *name, const char *suffix)
{
    const std::string text(name ? name : "");
    const std::string tail(suffix);
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

} // namespace

struct X11KeyboardConnection::Private {
    Display *display = nullptr;
    // xcb for the grabs: its errors come back as values, so a refused combination needs
    // no process-wide Xlib error handler.
    xcb_connection_t *grabber = nullptr;
    xcb_window_t root = 0;
    int xiOpcode = 0;
    std::vector<std::string> triggerKeysyms;
    std::vector<int> xtestDevices;
    std::vector<std::uint8_t> triggerKeycodes;
    std::uint8_t spaceKeycode = 0;
    bool spaceGrabbed = false;
    std::vector<std::uint8_t> grabbedTriggerKeycodes;
    // The trigger's keys that are modifiers, grabbed to freeze the keyboard at their press.
    std::vector<std::uint8_t> syncTriggerKeycodes;
    // A trigger that is no modifier is down, and its grab holds the keyboard.
    bool takenTriggerHeld = false;
    int refusedGrabs = 0;
    // The request whose reply says the grab changes before it are done, until it came.
    std::optional<unsigned> grabsSync;

    ~Private()
    {
        if (grabber)
            xcb_disconnect(grabber);
        if (display)
            XCloseDisplay(display);
    }

    // The display, the extensions and the trigger's keycodes; no grab yet.
    OpenResult connect()
    {
        display = XOpenDisplay(nullptr);
        if (!display)
            return OpenResult::noDisplay;
        int event = 0;
        int error = 0;
        int major = 2;
        int minor = 2;
        if (!XQueryExtension(display, "XInputExtension", &xiOpcode, &event, &error)
            || XIQueryVersion(display, &major, &minor) != Success || major * 100 + minor < 202)
            return OpenResult::noXInput2;
        resolveKeycodes();
        return triggerKeycodes.empty() ? OpenResult::noTriggerKey : OpenResult::ok;
    }

    bool hasXTest() const
    {
        int event = 0;
        int error = 0;
        int major = 0;
        int minor = 0;
        return display && XTestQueryExtension(display, &event, &error, &major, &minor);
    }

    void resolveKeycodes()
    {
        triggerKeycodes.clear();
        int minKeycode = 0;
        int maxKeycode = 0;
        XDisplayKeycodes(display, &minKeycode, &maxKeycode);
        int perKeycode = 0;
        KeySym *map = XGetKeyboardMapping(display, minKeycode, maxKeycode - minKeycode + 1, &perKeycode);
        if (!map)
            return;
        for (const std::string &name : triggerKeysyms) {
            const KeySym wanted = XStringToKeysym(name.c_str());
            if (wanted == NoSymbol)
                continue;
            for (int keycode = minKeycode; keycode <= maxKeycode; ++keycode) {
                if (map[std::ptrdiff_t(keycode - minKeycode) * perKeycode] == wanted)
                    triggerKeycodes.push_back(static_cast<std::uint8_t>(keycode));
            }
            if (!triggerKeycodes.empty())
                break;
        }
        XFree(map);
        spaceKeycode = static_cast<std::uint8_t>(XKeysymToKeycode(display, XStringToKeysym("space")));
    }

    void findXTestDevices()
    {
        xtestDevices.clear();
        int count = 0;
        XIDeviceInfo *devices = XIQueryDevice(display, XIAllDevices, &count);
        for (int i = 0; i < count; ++i) {
            if (devices[i].use == XISlaveKeyboard && endsWith(devices[i].name, "XTEST keyboard"))
                xtestDevices.push_back(devices[i].deviceid);
        }
        XIFreeDeviceInfo(devices);
    }

    void selectRawKeys()
    {
        unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
        XIEventMask mask{XIAllMasterDevices, static_cast<int>(sizeof bits), bits};
        XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
        // Hierarchy changes are only reported for XIAllDevices.
        unsigned char hierarchyBits[XIMaskLen(XI_LASTEVENT)] = {};
        XISetMask(hierarchyBits, XI_HierarchyChanged);
        XIEventMask hierarchy{XIAllDevices, static_cast<int>(sizeof hierarchyBits), hierarchyBits};
        XISelectEvents(display, DefaultRootWindow(display), &hierarchy, 1);
        XSync(display, False);
    }

    void handleRawEvent(XGenericEventCookie *cookie, const std::function<void(const KeyEvent &)> &onKey)
    {
        if (cookie->evtype == XI_HierarchyChanged) {
            findXTestDevices();
            return;
        }
        if (cookie->evtype != XI_RawKeyPress && cookie->evtype != XI_RawKeyRelease)
            return;
        const auto *raw = static_cast<const XIRawEvent *>(cookie->data);
        const auto keycode = static_cast<std::uint8_t>(raw->detail);
        if (std::find(xtestDevices.begin(), xtestDevices.end(), raw->sourceid) != xtestDevices.end()
            && X11SynthesizedKeys::take(keycode))
            return;
        const bool press = cookie->evtype == XI_RawKeyPress;
        if (std::find(triggerKeycodes.begin(), triggerKeycodes.end(), keycode) != triggerKeycodes.end())
            onKey({Key::trigger, keycode, press});
        else if (keycode == spaceKeycode)
            onKey({Key::space, keycode, press});
        else if (press)
            onKey({Key::other, keycode, press});
    }

    void readEvents(const std::function<void(const KeyEvent &)> &onKey)
    {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MappingNotify) {
                // The keys may have moved: release the old ones before taking the new ones.
                const bool wasGrabbed = spaceGrabbed;
                setSpaceGrabbed(false);
                ungrabTriggerKeys();
                XRefreshKeyboardMapping(&event.xmapping);
                resolveKeycodes();
                grabTriggerKeys();
                setSpaceGrabbed(wasGrabbed);
            } else if (event.xcookie.type == GenericEvent && event.xcookie.extension == xiOpcode
                       && XGetEventData(display, &event.xcookie)) {
                handleRawEvent(&event.xcookie, onKey);
                XFreeEventData(display, &event.xcookie);
            }
        }
    }

    static void grabEveryCombination(xcb_connection_t *connection, xcb_window_t window, std::uint8_t keycode,
                                     std::uint8_t keyboardMode = XCB_GRAB_MODE_ASYNC)
    {
        for (int modifiers = 0; modifiers < modifierCombinations; ++modifiers)
            xcb_grab_key(connection, 0, window, static_cast<std::uint16_t>(modifiers), keycode, XCB_GRAB_MODE_ASYNC,
                         keyboardMode);
    }

    // A trigger like Menu would open context menus in the focused application: keys
    // that are not modifiers are taken for good (raw events still report them). A
    // modifier such as Right Ctrl stays with the applications for their shortcuts, but
    // its press waits for Space to be grabbed (letTriggerGoOn).
    void grabTriggerKeys()
    {
        XModifierKeymap *modifiers = XGetModifierMapping(display);
        if (!modifiers)
            return;
        const KeyCode *first = modifiers->modifiermap;
        const KeyCode *last = first + std::ptrdiff_t(8) * modifiers->max_keypermod;
        for (const std::uint8_t keycode : triggerKeycodes) {
            if (keycode == spaceKeycode)
                continue;
            const bool modifier = std::find(first, last, keycode) != last;
            grabEveryCombination(grabber, root, keycode, modifier ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC);
            grabbedTriggerKeycodes.push_back(keycode);
            if (modifier)
                syncTriggerKeycodes.push_back(keycode);
        }
        XFreeModifiermap(modifiers);
        askWhenGrabsAreDone();
    }

    void ungrabTriggerKeys()
    {
        for (const std::uint8_t keycode : grabbedTriggerKeycodes)
            xcb_ungrab_key(grabber, keycode, root, XCB_MOD_MASK_ANY);
        grabbedTriggerKeycodes.clear();
        syncTriggerKeycodes.clear();
        takenTriggerHeld = false;
        askWhenGrabsAreDone();
    }

    // The modifier trigger's press froze the keyboard. Its raw press was sent to the
    // watcher before this grabbed copy: read up to it, so onKey grabs Space first, then
    // replay the press to the focused application. Requests run in order, so the grab is
    // in place before the next key is processed.
    void letTriggerGoOn(const std::function<void(const KeyEvent &)> &onKey)
    {
        XSync(display, False);
        readEvents(onKey);
        xcb_allow_events(grabber, XCB_ALLOW_REPLAY_KEYBOARD, XCB_CURRENT_TIME);
        xcb_flush(grabber);
    }

    void setSpaceGrabbed(bool grabbed)
    {
        // Keycode 0 is AnyKey: a keymap without Space must not grab the whole keyboard.
        if (grabbed == spaceGrabbed || !grabber || spaceKeycode == 0)
            return;
        spaceGrabbed = grabbed;
        if (grabbed) {
            refusedGrabs = 0;
            grabEveryCombination(grabber, root, spaceKeycode);
        } else {
            xcb_ungrab_key(grabber, spaceKeycode, root, XCB_MOD_MASK_ANY);
        }
        askWhenGrabsAreDone();
    }

    // The server handles one client's requests in order: once this is answered, a key
    // another client sends meets the grabs. Never waited on: drainGrabber collects it.
    void askWhenGrabsAreDone()
    {
        if (grabsSync)
            xcb_discard_reply(grabber, *grabsSync);
        grabsSync = xcb_get_input_focus(grabber).sequence;
        xcb_flush(grabber);
    }

    // A swallowed Space: its repeats, its release and the keys typed meanwhile belong to
    // the application again, not to the grab it activated.
    void releaseKeyboard()
    {
        xcb_ungrab_keyboard(grabber, XCB_CURRENT_TIME);
        xcb_flush(grabber);
    }

    // The grab connection receives the trigger presses to let go on, the swallowed Spaces
    // and the errors of refused grabs.
    void drainGrabber(const std::function<void(const KeyEvent &)> &onKey)
    {
        while (xcb_generic_event_t *event = xcb_poll_for_event(grabber)) {
            const auto type = event->response_type & 0x7f;
            if (type == 0 && reinterpret_cast<xcb_generic_error_t *>(event)->error_code == badAccess) {
                ++refusedGrabs;
            } else if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
                const std::uint8_t keycode = reinterpret_cast<xcb_key_press_event_t *>(event)->detail;
                const bool press = type == XCB_KEY_PRESS;
                const auto isIn = [keycode](const std::vector<std::uint8_t> &keys) {
                    return std::find(keys.begin(), keys.end(), keycode) != keys.end();
                };
                if (isIn(syncTriggerKeycodes)) {
                    if (press)
                        letTriggerGoOn(onKey);
                } else if (isIn(grabbedTriggerKeycodes)) {
                    takenTriggerHeld = press;
                } else if (press && keycode == spaceKeycode && !takenTriggerHeld) {
                    // A trigger like Menu keeps the keyboard until it goes up, so that the
                    // application never sees it, not even its release.
                    releaseKeyboard();
                }
            }
            std::free(event);
        }
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (grabsSync && xcb_poll_for_reply(grabber, *grabsSync, &reply, &error)) {
            grabsSync.reset();
            std::free(reply);
            std::free(error);
        }
    }
};

X11KeyboardConnection::X11KeyboardConnection()
    : d(std::make_unique<Private>())
{
}

X11KeyboardConnection::~X11KeyboardConnection() = default;

X11KeyboardConnection::OpenResult X11KeyboardConnection::open(const std::vector<std::string> &triggerKeysyms)
{
    d = std::make_unique<Private>();
    d->triggerKeysyms = triggerKeysyms;
    if (const OpenResult status = d->connect(); status != OpenResult::ok)
        return status;
    d->findXTestDevices();

    int screen = 0;
    d->grabber = xcb_connect(DisplayString(d->display), &screen);
    if (xcb_connection_has_error(d->grabber))
        return OpenResult::noGrabConnection;
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(d->grabber));
    for (int i = 0; i < screen && screens.rem > 0; ++i)
        xcb_screen_next(&screens);
    d->root = screens.data->root;

    d->grabTriggerKeys();
    d->selectRawKeys();
    return OpenResult::ok;
}

X11KeyboardConnection::Probe X11KeyboardConnection::probe(const std::vector<std::string> &triggerKeysyms)
{
    Private connection;
    connection.triggerKeysyms = triggerKeysyms;
    Probe probe;
    probe.trigger = connection.connect();
    probe.xtest = connection.hasXTest();
    return probe;
}

void X11KeyboardConnection::waitForKeys(int wakeFd, const std::function<void(const KeyEvent &)> &onKey)
{
    const bool grabsWereInPlace = grabsInPlace();
    d->readEvents(onKey);
    d->drainGrabber(onKey);
    // The reply may already be read, and then nothing would wake the poll for it.
    if (grabsInPlace() != grabsWereInPlace)
        return;
    // A broken grab connection would report itself readable forever.
    const int grabberFd = xcb_connection_has_error(d->grabber) ? -1 : xcb_get_file_descriptor(d->grabber);
    pollfd fds[] = {
        {ConnectionNumber(d->display), POLLIN, 0},
        {grabberFd, POLLIN, 0},
        {wakeFd, POLLIN, 0},
    };
    if (poll(fds, 3, -1) <= 0)
        return;
    d->readEvents(onKey);
    d->drainGrabber(onKey);
}

void X11KeyboardConnection::setSpaceGrabbed(bool grabbed)
{
    d->setSpaceGrabbed(grabbed);
}

bool X11KeyboardConnection::grabsInPlace() const
{
    return !d->grabsSync;
}

int X11KeyboardConnection::refusedSpaceGrabs() const
{
    return d->refusedGrabs;
}
