// Xlib only: no Qt, no gtest in this file.
#include "XTestKeyboard.h"

#include <X11/XKBlib.h>
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
    return XkbKeysymToModifiers(d->display, XStringToKeysym("Num_Lock"));
}
