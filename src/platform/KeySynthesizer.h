#pragma once

// Key presses Quorla sends to the focused application as if typed. Plain C++: the X11
// implementation lives in a file that cannot see Qt.
class KeySynthesizer
{
public:
    // Ctrl+V for most applications; Ctrl+Shift+V for terminals, where Ctrl+V is a control
    // character; Shift+Insert for xterm and rxvt, which paste the primary selection with it.
    enum class PasteShortcut { controlV,
                               controlShiftV,
                               shiftInsert };

    KeySynthesizer() = default;
    KeySynthesizer(const KeySynthesizer &) = delete;
    KeySynthesizer &operator=(const KeySynthesizer &) = delete;
    virtual ~KeySynthesizer() = default;

    // A press and release of Backspace; false when it could not be sent.
    virtual bool sendBackspace() = 0;
    // The paste shortcut, V looked up in the active layout; false when it could not be sent.
    virtual bool sendPasteShortcut(PasteShortcut shortcut) = 0;
    // True while the user holds any modifier key; synthesized keys would combine with it.
    [[nodiscard]] virtual bool isAnyModifierPressed() = 0;
};
