// Xlib only: no Qt, no gtest in this file.
#include "X11KeySynthesizer.h"

#include "platform/linux/X11SynthesizedKeys.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <initializer_list>

struct X11KeySynthesizer::Impl {
    Display *display = nullptr;

    ~Impl()
    {
        if (display)
            XCloseDisplay(display);
    }

    // The key that types "v" in the active layout; in a layout without Latin letters, the
    // key that is "v" in another group, which is what toolkits match shortcuts on.
    KeyCode keycodeForV()
    {
        XkbStateRec state{};
        XkbGetState(display, XkbUseCoreKbd, &state);
        int minimum = 0;
        int maximum = 0;
        XDisplayKeycodes(display, &minimum, &maximum);
        for (const int group : {static_cast<int>(state.group), 0, 1, 2, 3}) {
            for (int keycode = minimum; keycode <= maximum; ++keycode) {
                if (XkbKeycodeToKeysym(display, static_cast<KeyCode>(keycode), group, 0) == XK_v)
                    return static_cast<KeyCode>(keycode);
            }
        }
        // No Latin layout at all: the physical V key of evdev keyboards.
        constexpr KeyCode evdevV = 55;
        return evdevV;
    }

    // Presses the keys in order and releases them in reverse.
    bool chord(std::initializer_list<KeyCode> keys)
    {
        if (!display)
            return false;
        for (const KeyCode key : keys) {
            if (!key)
                return false;
        }
        bool sent = true;
        // Told before sending, so the trigger hook never meets them unannounced.
        for (const KeyCode key : keys) {
            X11SynthesizedKeys::expect(key); // its press
            X11SynthesizedKeys::expect(key); // and its release
        }
        for (const KeyCode key : keys)
            sent = XTestFakeKeyEvent(display, key, True, CurrentTime) && sent;
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
            sent = XTestFakeKeyEvent(display, *key, False, CurrentTime) && sent;
        XSync(display, False);
        return sent;
    }
};

X11KeySynthesizer::X11KeySynthesizer()
    : d(std::make_unique<Impl>())
{
    d->display = XOpenDisplay(nullptr);
    int eventBase = 0;
    int errorBase = 0;
    int major = 0;
    int minor = 0;
    if (d->display && !XTestQueryExtension(d->display, &eventBase, &errorBase, &major, &minor)) {
        XCloseDisplay(d->display);
        d->display = nullptr;
    }
}

X11KeySynthesizer::~X11KeySynthesizer() = default;

bool X11KeySynthesizer::sendBackspace()
{
    return d->display && d->chord({XKeysymToKeycode(d->display, XK_BackSpace)});
}

bool X11KeySynthesizer::sendPasteShortcut(PasteShortcut shortcut)
{
    if (!d->display)
        return false;
    if (shortcut == PasteShortcut::shiftInsert)
        return d->chord({XKeysymToKeycode(d->display, XK_Shift_L), XKeysymToKeycode(d->display, XK_Insert)});
    const KeyCode control = XKeysymToKeycode(d->display, XK_Control_L);
    const KeyCode v = d->keycodeForV();
    if (shortcut == PasteShortcut::controlShiftV)
        return d->chord({control, XKeysymToKeycode(d->display, XK_Shift_L), v});
    return d->chord({control, v});
}

bool X11KeySynthesizer::isAnyModifierPressed()
{
    if (!d->display)
        return false;
    char pressed[32] = {};
    XQueryKeymap(d->display, pressed);
    XModifierKeymap *modifiers = XGetModifierMapping(d->display);
    if (!modifiers)
        return false;
    bool any = false;
    for (int i = 0; i < 8 * modifiers->max_keypermod && !any; ++i) {
        const KeyCode key = modifiers->modifiermap[i];
        any = key && (pressed[key / 8] & (1 << (key % 8)));
    }
    XFreeModifiermap(modifiers);
    return any;
}
