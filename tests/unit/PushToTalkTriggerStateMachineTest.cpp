#include "models/PushToTalkTriggerStateMachine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Action = PushToTalkTriggerAction;
using Input = PushToTalkTriggerInput;
using Machine = PushToTalkTriggerStateMachine;
using Phase = PushToTalkTriggerPhase;

// A state is "phase fn space": i/p/h/t/s for idle/pendingHold/holdActive/toggleActive/
// shortcut, F and S when the trigger and Space are believed down. Inputs: F/f the trigger
// down/up, S a Space press (! with the trigger flag), s Space up, H the hold delay running
// out, K another key down. Actions: c/x capture/clear the target, s/k schedule/cancel the
// hold, H/h hold started/ended, T/t toggle started/ended, C hold cancelled.
struct Row {
    const char *name, *before;
    char input;
    const char *after, *actions;
};

void PrintTo(const Row &row, std::ostream *os)
{
    *os << row.name;
}

Machine machine(const std::string &s)
{
    return {Phase(std::string_view("iphts").find(s[0])), s[1] == 'F', s[2] == 'S'};
}

std::string letters(auto actions)
{
    std::string out;
    for (const Action action : actions)
        out += "cxskHhTtC"[int(action)];
    return out;
}

class TransitionTable : public ::testing::TestWithParam<Row>
{};

TEST_P(TransitionTable, givesTheExactActionsAndState)
{
    const Row &row = GetParam();
    Machine m = machine(row.before);
    const Input inputs[] = {Input::fnDown(), Input::fnUp(), Input::spaceDown(false), Input::spaceDown(true),
                            Input::spaceUp(), Input::holdDelayElapsed(), Input::otherKeyDown()};
    EXPECT_EQ(letters(m.handle(inputs[std::string_view("FfS!sHK").find(row.input)])), row.actions);
    EXPECT_EQ(m, machine(row.after));
}

INSTANTIATE_TEST_SUITE_P(All, TransitionTable, ::testing::Values(Row{"repeatWhileHeld", "hF-", 'F', "hF-", ""}, Row{"repeatInIdle", "iFS", 'F', "iFS", ""}, Row{"pendingHoldBelievedUp", "p--", 'F', "pF-", ""}, Row{"holdActiveBelievedUp", "h--", 'F', "hF-", ""}, Row{"fnEndsToggle", "t--", 'F', "iF-", "tx"}, Row{"spaceAlreadyDown", "i-S", 'F', "iFS", ""}, Row{"startsPendingHold", "i--", 'F', "pF-", "cs"}, Row{"fnUpBelievedUp", "i--", 'f', "i--", ""}, Row{"fnUpBelievedUpInToggle", "t-S", 'f', "t-S", ""}, Row{"idleReleaseClearsTarget", "iF-", 'f', "i--", "x"}, Row{"quickTap", "pF-", 'f', "i--", "kx"}, Row{"endsHold", "hFS", 'f', "i-S", "hx"}, Row{"toggleKeepsRunning", "tF-", 'f', "t--", ""}, Row{"plainSpacePassesThrough", "i--", 'S', "i-S", ""}, Row{"flagStartsToggleFromIdle", "i--", '!', "tFS", "cT"}, Row{"heldTriggerStartsToggleFromIdle", "iF-", 'S', "tFS", "cT"}, Row{"pendingHoldWithoutFn", "p--", 'S', "p-S", ""}, Row{"pendingHoldWithFlagKeepsBelief", "p--", '!', "t-S", "kT"}, Row{"pendingHoldWithHeldTrigger", "pF-", 'S', "tFS", "kT"}, Row{"holdActiveWithoutFn", "h--", 'S', "h-S", ""}, Row{"holdPromotedWithFlagKeepsBelief", "h--", '!', "t-S", "T"}, Row{"holdPromoted", "hF-", 'S', "tFS", "T"}, Row{"plainSpaceEndsToggle", "t--", 'S', "i-S", "tx"}, Row{"fnSpaceEndsToggle", "tF-", '!', "iFS", "tx"}, Row{"spaceUpClearsSpace", "tFS", 's', "tF-", ""}, Row{"spaceUpWhenUp", "i--", 's', "i--", ""}, Row{"timerStartsHold", "pF-", 'H', "hF-", "H"}, Row{"staleTimerInIdle", "i--", 'H', "i--", ""}, Row{"staleTimerInHold", "hF-", 'H', "hF-", ""}, Row{"staleTimerInToggle", "t--", 'H', "t--", ""}, Row{"keyMakesPendingHoldAShortcut", "pF-", 'K', "sF-", "k"}, Row{"keyCancelsHold", "hF-", 'K', "sF-", "C"}, Row{"keyLeavesToggle", "tF-", 'K', "tF-", ""}, Row{"shortcutTakesNoSpace", "sF-", 'S', "sFS", ""}, Row{"shortcutEndsWithTrigger", "sF-", 'f', "i--", "x"}),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
