#include "models/PushToTalkTriggerStateMachine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Action = PushToTalkTriggerAction;
using Input = PushToTalkTriggerInput;
using Machine = PushToTalkTriggerStateMachine;
using Phase = PushToTalkTriggerPhase;

// A state is "phase fn space": i/p/h/t for idle/pendingHold/holdActive/toggleActive, F and
// S when the trigger and Space are believed down. Inputs: F/f the trigger down/up, S a
// Space press (! with the trigger flag), s Space up, H the hold delay running out.
// Actions: c/x capture/clear the target, s/k schedule/cancel the hold, H/h hold
// started/ended, T/t toggle started/ended.
struct Row {
    const char *name, *before;
    char input;
    const char *after, *actions;
};

void PrintTo(const Row &row, std::ostream *os) { *os << row.name; }

Machine machine(const std::string &s)
{
    const Phase phase = s[0] == 'p' ? Phase::pendingHold : s[0] == 'h' ? Phase::holdActive
                                    : s[0] == 't'                      ? Phase::toggleActive : Phase::idle;
    return {phase, s[1] == 'F', s[2] == 'S'};
}

Input input(char c)
{
    switch (c) {
    case 'F': return Input::fnDown();
    case 'f': return Input::fnUp();
    case 'S': return Input::spaceDown(false);
    case '!': return Input::spaceDown(true);
    case 's': return Input::spaceUp();
    default: return Input::holdDelayElapsed();
    }
}

std::string letters(auto actions)
{
    static const char codes[] = "cxskHhTt";
    std::string out;
    for (const Action action : actions)
        out += codes[int(action)];
    return out;
}

class TransitionTable : public ::testing::TestWithParam<Row> {};

TEST_P(TransitionTable, givesTheExactActionsAndState)
{
    const Row &row = GetParam();
    Machine m = machine(row.before);
    EXPECT_EQ(letters(m.handle(input(row.input))), row.actions);
    EXPECT_EQ(m, machine(row.after));
}

INSTANTIATE_TEST_SUITE_P(All, TransitionTable, ::testing::Values(
    Row{"repeatWhileHeld", "hF-", 'F', "hF-", ""},
    Row{"repeatInIdle", "iFS", 'F', "iFS", ""},
    Row{"pendingHoldBelievedUp", "p--", 'F', "pF-", ""},
    Row{"holdActiveBelievedUp", "h--", 'F', "hF-", ""},
    Row{"fnEndsToggle", "t--", 'F', "iF-", "tx"},
    Row{"spaceAlreadyDown", "i-S", 'F', "iFS", ""},
    Row{"startsPendingHold", "i--", 'F', "pF-", "cs"},
    Row{"fnUpBelievedUp", "i--", 'f', "i--", ""},
    Row{"fnUpBelievedUpInToggle", "t-S", 'f', "t-S", ""},
    Row{"idleReleaseClearsTarget", "iF-", 'f', "i--", "x"},
    Row{"quickTap", "pF-", 'f', "i--", "kx"},
    Row{"endsHold", "hFS", 'f', "i-S", "hx"},
    Row{"toggleKeepsRunning", "tF-", 'f', "t--", ""},
    Row{"plainSpacePassesThrough", "i--", 'S', "i-S", ""},
    Row{"flagStartsToggleFromIdle", "i--", '!', "tFS", "cT"},
    Row{"heldTriggerStartsToggleFromIdle", "iF-", 'S', "tFS", "cT"},
    Row{"pendingHoldWithoutFn", "p--", 'S', "p-S", ""},
    Row{"pendingHoldWithFlagKeepsBelief", "p--", '!', "t-S", "kT"},
    Row{"pendingHoldWithHeldTrigger", "pF-", 'S', "tFS", "kT"},
    Row{"holdActiveWithoutFn", "h--", 'S', "h-S", ""},
    Row{"holdPromotedWithFlagKeepsBelief", "h--", '!', "t-S", "T"},
    Row{"holdPromoted", "hF-", 'S', "tFS", "T"},
    Row{"plainSpaceEndsToggle", "t--", 'S', "i-S", "tx"},
    Row{"fnSpaceEndsToggle", "tF-", '!', "iFS", "tx"},
    Row{"spaceUpClearsSpace", "tFS", 's', "tF-", ""},
    Row{"spaceUpWhenUp", "i--", 's', "i--", ""},
    Row{"timerStartsHold", "pF-", 'H', "hF-", "H"},
    Row{"staleTimerInIdle", "i--", 'H', "i--", ""},
    Row{"staleTimerInHold", "hF-", 'H', "hF-", ""},
    Row{"staleTimerInToggle", "t--", 'H', "t--", ""}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
