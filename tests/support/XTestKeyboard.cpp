// Xlib only: no Qt, no gtest in this file.
#include "XTestKeyboard.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

struct XTestKeyboard::Private {
    Display *display = nullptr;
    ~Private()
    {
        if (display)
            XCloseDisplay(display);
    }
};

namespace {

int refusedRequests = 0;

int countError(Display *, XErrorEvent *)
{
    ++refusedRequests;
    return 0;
}

} // namespace

XTestKeyboard::XTestKeyboard()
    : d(std::make_unique<Private>())
{
    d->display = XOpenDisplay(nullptr);
}

XTestKeyboard::~XTestKeyboard() = default;

bool XTestKeyboard::isOpen() const
{
    return d->display != nullptr;
}

void XTestKeyboard::press(const char *keysym)
{
    send(keysym, true);
}

void XTestKeyboard::release(const char *keysym)
{
    send(keysym, false);
}

void XTestKeyboard::send(const char *keysym, bool press)
{
    const KeyCode keycode = XKeysymToKeycode(d->display, XStringToKeysym(keysym));
    XTestFakeKeyEvent(d->display, keycode, press ? True : False, CurrentTime);
    XFlush(d->display);
}

bool XTestKeyboard::grabSpace(unsigned modifiers)
{
    const KeyCode space = XKeysymToKeycode(d->display, XStringToKeysym("space"));
    refusedRequests = 0;
    auto *previous = XSetErrorHandler(countError);
    XGrabKey(d->display, space, modifiers, DefaultRootWindow(d->display), False, GrabModeAsync, GrabModeAsync);
    XSync(d->display, False);
    XSetErrorHandler(previous);
    return refusedRequests == 0;
}

unsigned XTestKeyboard::numLockMask() const
{
    const KeyCode numLock = XKeysymToKeycode(d->display, XStringToKeysym("Num_Lock"));
    XModifierKeymap *map = XGetModifierMapping(d->display);
    unsigned mask = 0;
    for (int modifier = 0; modifier < 8 && numLock; ++modifier) {
        for (int i = 0; i < map->max_keypermod; ++i) {
            if (map->modifiermap[modifier * map->max_keypermod + i] == numLock)
                mask = 1u << modifier;
        }
    }
    XFreeModifiermap(map);
    return mask;
}
