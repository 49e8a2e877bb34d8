#pragma once

#include <cstdint>
#include <span>

enum class PushToTalkTriggerPhase : std::uint8_t { idle,
                                                   pendingHold,
                                                   holdActive,
                                                   toggleActive,
                                                   // the trigger is held for another key's shortcut
                                                   shortcut };

enum class PushToTalkTriggerAction : std::uint8_t {
    captureTargetApplication,
    clearTargetApplication,
    scheduleHold,
    cancelHold,
    notifyHoldStarted,
    notifyHoldEnded,
    notifyToggleStarted,
    notifyToggleEnded,
    // the hold turned out to be a shortcut: drop its recording, send nothing
    notifyHoldCancelled,
};

// One raw keyboard fact. Only spaceDown carries a value: whether the Space event
// itself had the trigger's modifier flag.
struct PushToTalkTriggerInput {
    enum class Kind : std::uint8_t { spaceDown,
                                     fnDown,
                                     fnUp,
                                     spaceUp,
                                     holdDelayElapsed,
                                     otherKeyDown };

    Kind kind;
    bool fnFlag = false;

    static constexpr PushToTalkTriggerInput spaceDown(bool fnFlag) { return {Kind::spaceDown, fnFlag}; }
    static constexpr PushToTalkTriggerInput fnDown() { return {Kind::fnDown}; }
    static constexpr PushToTalkTriggerInput fnUp() { return {Kind::fnUp}; }
    static constexpr PushToTalkTriggerInput spaceUp() { return {Kind::spaceUp}; }
    static constexpr PushToTalkTriggerInput holdDelayElapsed() { return {Kind::holdDelayElapsed}; }
    // A key other than the trigger and Space went down.
    static constexpr PushToTalkTriggerInput otherKeyDown() { return {Kind::otherKeyDown}; }

    friend constexpr bool operator==(PushToTalkTriggerInput, PushToTalkTriggerInput) = default;
};

// Turns trigger and Space key facts into hold and toggle begin/end actions.
// handle() allocates nothing: every action list is a shared constant.
struct PushToTalkTriggerStateMachine {
    using Actions = std::span<const PushToTalkTriggerAction>;

    PushToTalkTriggerPhase phase = PushToTalkTriggerPhase::idle;
    bool isFnPressed = false;
    bool isSpacePressed = false;

    Actions handle(PushToTalkTriggerInput input) noexcept;
    void reset() noexcept { *this = {}; }
    // Whether a Space press now would start or end a toggle, and so must not reach the application.
    [[nodiscard]] constexpr bool wouldConsumeSpace() const noexcept
    {
        return phase == PushToTalkTriggerPhase::toggleActive
            || (isFnPressed && phase != PushToTalkTriggerPhase::shortcut);
    }

    friend constexpr bool operator==(const PushToTalkTriggerStateMachine &,
                                     const PushToTalkTriggerStateMachine &) = default;

private:
    Actions handleFnDown() noexcept;
    Actions handleFnUp() noexcept;
    Actions handleSpaceDown(bool fnFlag) noexcept;
    Actions handleHoldDelayElapsed() noexcept;
    Actions handleOtherKeyDown() noexcept;
};
