#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The X server side of the trigger hook, behind a plain interface (Xlib's macros break
// Qt and gtest). Two connections: one watches XInput2 raw key events on the root
// window, the other grabs Space, because a connection that holds a key grab receives
// no raw events. Used by one thread at a time.
class X11KeyboardConnection
{
public:
    enum class OpenResult { ok,
                            noDisplay,
                            noXInput2,
                            noTriggerKey,
                            noGrabConnection };
    enum class Key : std::uint8_t { trigger,
                                    space,
                                    other };
    struct KeyEvent {
        Key key;
        std::uint8_t keycode;
        bool press;
    };

    X11KeyboardConnection();
    // Closing both connections drops every grab they hold.
    ~X11KeyboardConnection();
    X11KeyboardConnection(const X11KeyboardConnection &) = delete;
    X11KeyboardConnection &operator=(const X11KeyboardConnection &) = delete;

    // Connects to $DISPLAY and starts watching the first of triggerKeysyms (keysym names,
    // "Control_R") that some key of the current keymap produces. Keys from the XTEST
    // devices count, except the ones Quorla sends itself (X11SynthesizedKeys).
    OpenResult open(const std::vector<std::string> &triggerKeysyms);
    // What open() would answer, and whether XTest is there, without grabbing or watching.
    struct Probe {
        OpenResult trigger = OpenResult::noDisplay;
        bool xtest = false;
    };
    static Probe probe(const std::vector<std::string> &triggerKeysyms);
    // Waits until keys arrive, wakeFd becomes readable or grabsInPlace changes; reports
    // each trigger and Space key, and other keys' presses, in order. Call setSpaceGrabbed
    // from onKey to act before the next key is read.
    void waitForKeys(int wakeFd, const std::function<void(const KeyEvent &)> &onKey);
    // Grabs Space under every modifier combination, one by one, so a combination another
    // client holds costs only that combination; or releases them all.
    void setSpaceGrabbed(bool grabbed);
    // False from a change of the grabs (the trigger's at open and after a keymap change,
    // Space's) until waitForKeys sees that the server has carried it out.
    [[nodiscard]] bool grabsInPlace() const;
    // How many combinations other clients held at the last grab, as far as known yet.
    [[nodiscard]] int refusedSpaceGrabs() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
