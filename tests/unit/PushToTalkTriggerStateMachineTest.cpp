#include "models/PushToTalkTriggerStateMachine.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Action = PushToTalkTriggerAction;
using Input = PushToTalkTriggerInput;
using Machine = PushToTalkTriggerStateMachine;
using Phase = PushToTalkTriggerPhase;
using Actions = std::vector<Action>;

Actions feed(Machine &machine, Input input)
{
    const auto actions = machine.handle(input);
    return {actions.begin(), actions.end()};
}

struct Row {
    const char *name;
    Machine before;
    Input input;
    Machine after;
    Actions actions;
};

void PrintTo(const Row &row, std::ostream *os) { *os << row.name; }

std::string rowName(const ::testing::TestParamInfo<Row> &info) { return info.param.name; }

class TransitionTable : public ::testing::TestWithParam<Row> {};

TEST_P(TransitionTable, givesTheExactActionsAndState)
{
    const Row &row = GetParam();
    Machine machine = row.before;
    EXPECT_EQ(feed(machine, row.input), row.actions);
    EXPECT_EQ(machine, row.after);
}

constexpr Machine state(Phase phase, bool fn, bool space) { return {phase, fn, space}; }

// fnDown, row by row.
INSTANTIATE_TEST_SUITE_P(FnDown, TransitionTable, ::testing::Values(
    Row{"repeatWhileHeld", state(Phase::holdActive, true, false), Input::fnDown(), state(Phase::holdActive, true, false), {}},
    Row{"repeatInIdle", state(Phase::idle, true, true), Input::fnDown(), state(Phase::idle, true, true), {}},
    Row{"pendingHoldBelievedUp", state(Phase::pendingHold, false, false), Input::fnDown(), state(Phase::pendingHold, true, false), {}},
    Row{"holdActiveBelievedUp", state(Phase::holdActive, false, false), Input::fnDown(), state(Phase::holdActive, true, false), {}},
    Row{"endsToggle", state(Phase::toggleActive, false, false), Input::fnDown(), state(Phase::idle, true, false),
        {Action::notifyToggleEnded, Action::clearTargetApplication}},
    Row{"spaceAlreadyDown", state(Phase::idle, false, true), Input::fnDown(), state(Phase::idle, true, true), {}},
    Row{"startsPendingHold", state(Phase::idle, false, false), Input::fnDown(), state(Phase::pendingHold, true, false),
        {Action::captureTargetApplication, Action::scheduleHold}}),
    rowName);

// fnUp, row by row.
INSTANTIATE_TEST_SUITE_P(FnUp, TransitionTable, ::testing::Values(
    Row{"believedUp", state(Phase::idle, false, false), Input::fnUp(), state(Phase::idle, false, false), {}},
    Row{"believedUpInToggle", state(Phase::toggleActive, false, true), Input::fnUp(), state(Phase::toggleActive, false, true), {}},
    Row{"idleClearsTarget", state(Phase::idle, true, false), Input::fnUp(), state(Phase::idle, false, false),
        {Action::clearTargetApplication}},
    Row{"quickTap", state(Phase::pendingHold, true, false), Input::fnUp(), state(Phase::idle, false, false),
        {Action::cancelHold, Action::clearTargetApplication}},
    Row{"endsHold", state(Phase::holdActive, true, true), Input::fnUp(), state(Phase::idle, false, true),
        {Action::notifyHoldEnded, Action::clearTargetApplication}},
    Row{"toggleKeepsRunning", state(Phase::toggleActive, true, false), Input::fnUp(), state(Phase::toggleActive, false, false), {}}),
    rowName);

// spaceDown, row by row; S is set in every case.
INSTANTIATE_TEST_SUITE_P(SpaceDown, TransitionTable, ::testing::Values(
    Row{"plainSpacePassesThrough", state(Phase::idle, false, false), Input::spaceDown(false), state(Phase::idle, false, true), {}},
    Row{"flagStartsToggleFromIdle", state(Phase::idle, false, false), Input::spaceDown(true), state(Phase::toggleActive, true, true),
        {Action::captureTargetApplication, Action::notifyToggleStarted}},
    Row{"heldTriggerStartsToggleFromIdle", state(Phase::idle, true, false), Input::spaceDown(false), state(Phase::toggleActive, true, true),
        {Action::captureTargetApplication, Action::notifyToggleStarted}},
    Row{"pendingHoldWithoutFn", state(Phase::pendingHold, false, false), Input::spaceDown(false), state(Phase::pendingHold, false, true), {}},
    Row{"pendingHoldWithFlagKeepsBelief", state(Phase::pendingHold, false, false), Input::spaceDown(true), state(Phase::toggleActive, false, true),
        {Action::cancelHold, Action::notifyToggleStarted}},
    Row{"pendingHoldWithHeldTrigger", state(Phase::pendingHold, true, false), Input::spaceDown(false), state(Phase::toggleActive, true, true),
        {Action::cancelHold, Action::notifyToggleStarted}},
    Row{"holdActiveWithoutFn", state(Phase::holdActive, false, false), Input::spaceDown(false), state(Phase::holdActive, false, true), {}},
    Row{"holdPromotedWithFlagKeepsBelief", state(Phase::holdActive, false, false), Input::spaceDown(true), state(Phase::toggleActive, false, true),
        {Action::notifyToggleStarted}},
    Row{"holdPromoted", state(Phase::holdActive, true, false), Input::spaceDown(false), state(Phase::toggleActive, true, true),
        {Action::notifyToggleStarted}},
    Row{"plainSpaceEndsToggle", state(Phase::toggleActive, false, false), Input::spaceDown(false), state(Phase::idle, false, true),
        {Action::notifyToggleEnded, Action::clearTargetApplication}},
    Row{"fnSpaceEndsToggle", state(Phase::toggleActive, true, false), Input::spaceDown(true), state(Phase::idle, true, true),
        {Action::notifyToggleEnded, Action::clearTargetApplication}}),
    rowName);

// spaceUp never acts; holdDelayElapsed acts only in pendingHold.
INSTANTIATE_TEST_SUITE_P(SpaceUpAndTimer, TransitionTable, ::testing::Values(
    Row{"spaceUpClearsSpace", state(Phase::toggleActive, true, true), Input::spaceUp(), state(Phase::toggleActive, true, false), {}},
    Row{"spaceUpWhenUp", state(Phase::idle, false, false), Input::spaceUp(), state(Phase::idle, false, false), {}},
    Row{"timerStartsHold", state(Phase::pendingHold, true, false), Input::holdDelayElapsed(), state(Phase::holdActive, true, false),
        {Action::notifyHoldStarted}},
    Row{"staleTimerInIdle", state(Phase::idle, false, false), Input::holdDelayElapsed(), state(Phase::idle, false, false), {}},
    Row{"staleTimerInHold", state(Phase::holdActive, true, false), Input::holdDelayElapsed(), state(Phase::holdActive, true, false), {}},
    Row{"staleTimerInToggle", state(Phase::toggleActive, false, false), Input::holdDelayElapsed(), state(Phase::toggleActive, false, false), {}}),
    rowName);

} // namespace
