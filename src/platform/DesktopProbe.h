#pragma once

#include "platform/DesktopSession.h"

#include <QString>

struct TriggerKey;

// Read-only questions about the desktop, for `quorla doctor`: none of them grabs a key,
// records or prompts. Answers are values; a call may wait on a server for a moment, so
// callers run it off the main thread.
class DesktopProbe
{
public:
    enum class SessionType { x11,
                             wayland,
                             none };
    enum class TriggerAccess { watchable,
                               noDisplay,
                               noXInput2,
                               noTriggerKey };

    struct Session {
        SessionType type = SessionType::none;
        QString display;       // the X display Quorla would use; empty when there is none
        DesktopSession offers; // what the session's servers answered
    };
    struct AccessibilityBus {
        bool reachable = false;
        bool enabled = false;
    };
    struct AudioServer {
        bool reachable = false;
        QString name;         // "PulseAudio (on PipeWire 0.3.65)", ...
        QString defaultInput; // its description; empty when there is no default input
    };

    DesktopProbe() = default;
    DesktopProbe(const DesktopProbe &) = delete;
    DesktopProbe &operator=(const DesktopProbe &) = delete;
    virtual ~DesktopProbe() = default;

    virtual Session session() = 0;
    // Whether the trigger hook could watch this key now.
    virtual TriggerAccess triggerAccess(const TriggerKey &key) = 0;
    virtual AccessibilityBus accessibilityBus() = 0;
    // Whether keys can be synthesized, which the paste route needs.
    virtual bool canSynthesizeKeys() = 0;
    virtual AudioServer audioServer() = 0;
};
