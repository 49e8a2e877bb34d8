#pragma once

#include <QString>
#include <exception>
#include <functional>
#include <optional>

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
        // Another key went down while the trigger was down: the gesture is that key's
        // shortcut, not a dictation. The key itself goes on to the application. Telling
        // only the first such key of a gesture is enough; the monitor ignores the rest.
        std::function<void()> otherKeyDown;
        // A toggle gesture of its own: sent by hooks whose desktop binds the toggle as a
        // separate shortcut, since they never see Space (the GlobalShortcuts portal).
        std::function<void()> toggleRequested;
        // The hook took another route after install() returned (the desktop refused its
        // shortcuts and a fallback serves): what install() would now throw or notice.
        std::function<void(std::exception_ptr failure, std::optional<QString> notice)> routeChanged;
        // The desktop named the trigger or the toggle anew (its shortcuts were bound or
        // changed in its settings): the display names now read differently.
        std::function<void()> namesChanged;
    };

    // What a successful install achieved. A notice says what the hook cannot see (for
    // example windows of another display server) while it works for the rest.
    struct InstallOutcome {
        std::optional<QString> notice;
    };

    virtual ~KeyboardHook() = default;

    // Starts delivering events. Throws QuorlaError::hotkeyRegistrationFailed with the
    // platform's words when the keyboard cannot be observed, and is then not installed.
    virtual InstallOutcome install(Events events) = 0;
    // Stops delivering events and releases every grab; safe to call when not installed.
    virtual void uninstall() = 0;
    [[nodiscard]] virtual bool isInstalled() const = 0;
    // True while a Space press would be consumed (trigger held for no shortcut, or toggle
    // running): backends that cannot decide each press synchronously take Space only then.
    virtual void setSpaceCaptureWanted(bool wanted) = 0;
    // The trigger key's name as shown to the user ("Fn", "Right Ctrl", ...).
    [[nodiscard]] virtual QString triggerDisplayName() const = 0;
    // The toggle's own shortcut as shown to the user, where the desktop binds it apart from
    // the trigger ("Ctrl+Alt+Space"); empty where the toggle is trigger + Space.
    [[nodiscard]] virtual QString toggleDisplayName() const { return {}; }
    // Watches another key from now on; a trigger held at that moment counts as released.
    // When installed, installs again for the new key: throws like install() and is left
    // uninstalled, or returns install()'s outcome. Not installed, returns no notice.
    virtual InstallOutcome setTriggerKey(const TriggerKey &key) = 0;
};
