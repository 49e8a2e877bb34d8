#pragma once

#include "models/PushToTalkTriggerStateMachine.h"

#include <bitset>
#include <cstdint>
#include <optional>

// Decides, in the order the keys arrive and without waiting for the main thread,
// whether Space must be taken from the focused application right now. It runs its
// own copy of the trigger state machine fed with the same inputs as the monitor's:
// the hold timer never changes whether a Space press is consumed, so the two
// copies always agree on that, and a busy main thread never holds Space hostage.
class SpaceCaptureTracker
{
public:
    struct SpacePress {
        bool autoRepeat = false;
        bool triggerFlag = false;
        // Whether the press met a Space grab, i.e. the focused application never saw it.
        bool swallowed = false;
    };

    // One of the trigger's keys changed; returns the trigger's new state when it
    // changed as a whole (another key of the same trigger may still be down).
    std::optional<bool> triggerKeyChanged(std::uint8_t keycode, bool down);
    SpacePress spaceDown();
    void spaceUp();
    // A key other than the trigger and Space went down; true when that made the gesture
    // a shortcut (the hold is off).
    bool otherKeyDown();
    // Back to nothing pressed, nothing running; the trigger's keys changed.
    void reset();

    [[nodiscard]] bool wantsSpaceGrab() const;
    [[nodiscard]] bool isTriggerDown() const { return m_triggerKeysDown.any(); }

private:
    PushToTalkTriggerStateMachine m_machine;
    std::bitset<256> m_triggerKeysDown;
    bool m_spaceDown = false;
};
