#pragma once

#include <memory>

// Presses exact keys through XTest, as tests need them (xdotool's Control_R also
// presses Control_L), and plays "another client" that holds a key grab. Own X
// connection; use it from one thread. Xlib stays in the .cpp (its macros break Qt).
class XTestKeyboard
{
public:
    XTestKeyboard();
    ~XTestKeyboard();
    XTestKeyboard(const XTestKeyboard &) = delete;
    XTestKeyboard &operator=(const XTestKeyboard &) = delete;

    [[nodiscard]] bool isOpen() const;
    // keysym is a keysym name ("Control_R", "space"); the event is flushed at once.
    void press(const char *keysym) { send(keysym, true); }
    void release(const char *keysym) { send(keysym, false); }
    // Grabs Space with exactly these core modifier bits on the root window, as another
    // application holding a shortcut would; false when the server refused.
    bool grabSpace(unsigned modifiers);
    // The bit of the modifier NumLock sets (Mod2 on common keymaps).
    [[nodiscard]] unsigned numLockMask() const;

private:
    void send(const char *keysym, bool press);

    struct Private;
    std::unique_ptr<Private> d;
};
