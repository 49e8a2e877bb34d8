#pragma once

// XTest key presses on a connection of their own. Plain C++: the implementation
// includes Xlib, whose macros cannot meet Qt.

#include "platform/KeySynthesizer.h"

#include <memory>

class X11KeySynthesizer : public KeySynthesizer
{
public:
    // Opens $DISPLAY; without a display or XTest every key reports failure.
    X11KeySynthesizer();
    ~X11KeySynthesizer() override;

    bool sendBackspace() override;
    bool sendPasteShortcut(PasteShortcut shortcut) override;
    bool isAnyModifierPressed() override;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
