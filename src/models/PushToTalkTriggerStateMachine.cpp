#include "PushToTalkTriggerStateMachine.h"

#include <array>

namespace {

using Action = PushToTalkTriggerAction;
using Phase = PushToTalkTriggerPhase;

constexpr std::array<Action, 2> captureAndSchedule{Action::captureTargetApplication, Action::scheduleHold};
constexpr std::array<Action, 2> toggleEndedAndClear{Action::notifyToggleEnded, Action::clearTargetApplication};
constexpr std::array<Action, 1> clearTarget{Action::clearTargetApplication};
constexpr std::array<Action, 2> cancelAndClear{Action::cancelHold, Action::clearTargetApplication};
constexpr std::array<Action, 2> holdEndedAndClear{Action::notifyHoldEnded, Action::clearTargetApplication};
constexpr std::array<Action, 2> captureAndToggleStarted{Action::captureTargetApplication, Action::notifyToggleStarted};
constexpr std::array<Action, 2> cancelAndToggleStarted{Action::cancelHold, Action::notifyToggleStarted};
constexpr std::array<Action, 1> toggleStarted{Action::notifyToggleStarted};
constexpr std::array<Action, 1> holdStarted{Action::notifyHoldStarted};
constexpr std::array<Action, 1> cancelHold{Action::cancelHold};
constexpr std::array<Action, 1> holdCancelled{Action::notifyHoldCancelled};

constexpr PushToTalkTriggerStateMachine::Actions none{};

} // namespace

PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handle(PushToTalkTriggerInput input) noexcept
{
    switch (input.kind) {
    case PushToTalkTriggerInput::Kind::fnDown:
        return handleFnDown();
    case PushToTalkTriggerInput::Kind::fnUp:
        return handleFnUp();
    case PushToTalkTriggerInput::Kind::spaceDown:
        return handleSpaceDown(input.fnFlag);
    case PushToTalkTriggerInput::Kind::spaceUp:
        isSpacePressed = false;
        return none;
    case PushToTalkTriggerInput::Kind::holdDelayElapsed:
        return handleHoldDelayElapsed();
    case PushToTalkTriggerInput::Kind::otherKeyDown:
        return handleOtherKeyDown();
    }
    return none;
}

PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handleFnDown() noexcept
{
    if (isFnPressed)
        return none;
    isFnPressed = true;
    switch (phase) {
    case Phase::pendingHold:
    case Phase::holdActive:
    case Phase::shortcut:
        return none;
    case Phase::toggleActive:
        phase = Phase::idle;
        return toggleEndedAndClear;
    case Phase::idle:
        if (isSpacePressed)
            return none;
        phase = Phase::pendingHold;
        return captureAndSchedule;
    }
    return none;
}

PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handleFnUp() noexcept
{
    if (!isFnPressed)
        return none;
    isFnPressed = false;
    switch (phase) {
    case Phase::idle:
        return clearTarget;
    case Phase::shortcut:
        phase = Phase::idle;
        return clearTarget;
    case Phase::pendingHold:
        phase = Phase::idle;
        return cancelAndClear;
    case Phase::holdActive:
        phase = Phase::idle;
        return holdEndedAndClear;
    case Phase::toggleActive:
        return none;
    }
    return none;
}

PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handleSpaceDown(bool fnFlag) noexcept
{
    isSpacePressed = true;
    const bool withFn = fnFlag || isFnPressed;
    switch (phase) {
    case Phase::idle:
        if (!withFn)
            return none;
        phase = Phase::toggleActive;
        isFnPressed = true;
        return captureAndToggleStarted;
    case Phase::pendingHold:
        if (!withFn)
            return none;
        phase = Phase::toggleActive;
        return cancelAndToggleStarted;
    case Phase::holdActive:
        if (!withFn)
            return none;
        phase = Phase::toggleActive;
        return toggleStarted;
    case Phase::toggleActive:
        phase = Phase::idle;
        return toggleEndedAndClear;
    case Phase::shortcut:
        return none; // trigger + key + Space belongs to the application
    }
    return none;
}

PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handleHoldDelayElapsed() noexcept
{
    if (phase != Phase::pendingHold)
        return none;
    phase = Phase::holdActive;
    return holdStarted;
}

// Trigger + key is the application's shortcut, not a dictation: until the trigger goes
// up nothing starts, and a hold already recording is dropped.
PushToTalkTriggerStateMachine::Actions PushToTalkTriggerStateMachine::handleOtherKeyDown() noexcept
{
    switch (phase) {
    case Phase::pendingHold:
        phase = Phase::shortcut;
        return cancelHold;
    case Phase::holdActive:
        phase = Phase::shortcut;
        return holdCancelled;
    case Phase::idle:
    case Phase::toggleActive:
    case Phase::shortcut:
        break;
    }
    return none;
}
