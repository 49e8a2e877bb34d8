#pragma once

#include <QString>
#include <functional>

struct TriggerKey;

// System-wide observation of the trigger key and Space. Events are delivered on
// the main thread.
class KeyboardHook
{
public:
    struct Events {
        // The trigger key went down (true) or up (false).
        std::function<void(bool down)> triggerChanged;
        // A Space key-down; returns true when the trigger consumed it (it must not reach the
        // focused application). autoRepeat presses are reported but never consumed.
        std::function<bool(bool autoRepeat, bool triggerFlag)> spaceDown;
        // A Space key-up; returns true when its key-down was consumed.
        std::function<bool()> spaceUp;
        // A toggle gesture of its own: sent by hooks whose desktop binds the toggle as a
        // separate shortcut, since they never see Space (the GlobalShortcuts portal).
        std::function<void()> toggleRequested;
    };

    virtual ~KeyboardHook() = default;

    // Starts delivering events. Throws QuorlaError::hotkeyRegistrationFailed with the
    // platform's words when the keyboard cannot be observed; also when it can be observed
    // only in part, and then the hook stays installed (isInstalled() tells).
    virtual void install(Events events) = 0;
    // Stops delivering events and releases every grab; safe to call when not installed.
    virtual void uninstall() = 0;
    [[nodiscard]] virtual bool isInstalled() const = 0;
    // True while a Space press would be consumed (trigger held or toggle running):
    // backends that cannot decide each press synchronously take Space only then.
    virtual void setSpaceCaptureWanted(bool wanted) = 0;
    // The trigger key's name as shown to the user ("Fn", "Right Ctrl", ...).
    [[nodiscard]] virtual QString triggerDisplayName() const = 0;
    // Watches another key from now on; a trigger held at that moment counts as released.
    // When installed and the new key cannot be observed, throws like install() and is
    // left uninstalled.
    virtual void setTriggerKey(const TriggerKey &key) = 0;
};
