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

TEST(PushToTalkTriggerStateMachine, eachTransitionGivesTheExactActionsAndState)
{
    const struct {
        const char *name, *before;
        char input;
        const char *after, *actions;
    } rows[] = {{"repeatWhileHeld", "hF-", 'F', "hF-", ""}, {"repeatInIdle", "iFS", 'F', "iFS", ""}, {"pendingHoldBelievedUp", "p--", 'F', "pF-", ""}, {"holdActiveBelievedUp", "h--", 'F', "hF-", ""}, {"fnEndsToggle", "t--", 'F', "iF-", "tx"}, {"spaceAlreadyDown", "i-S", 'F', "iFS", ""}, {"startsPendingHold", "i--", 'F', "pF-", "cs"}, {"fnUpBelievedUp", "i--", 'f', "i--", ""}, {"fnUpBelievedUpInToggle", "t-S", 'f', "t-S", ""}, {"idleReleaseClearsTarget", "iF-", 'f', "i--", "x"}, {"quickTap", "pF-", 'f', "i--", "kx"}, {"endsHold", "hFS", 'f', "i-S", "hx"}, {"toggleKeepsRunning", "tF-", 'f', "t--", ""}, {"plainSpacePassesThrough", "i--", 'S', "i-S", ""}, {"flagStartsToggleFromIdle", "i--", '!', "tFS", "cT"}, {"heldTriggerStartsToggleFromIdle", "iF-", 'S', "tFS", "cT"}, {"pendingHoldWithoutFn", "p--", 'S', "p-S", ""}, {"pendingHoldWithFlagKeepsBelief", "p--", '!', "t-S", "kT"}, {"pendingHoldWithHeldTrigger", "pF-", 'S', "tFS", "kT"}, {"holdActiveWithoutFn", "h--", 'S', "h-S", ""}, {"holdPromotedWithFlagKeepsBelief", "h--", '!', "t-S", "T"}, {"holdPromoted", "hF-", 'S', "tFS", "T"}, {"plainSpaceEndsToggle", "t--", 'S', "i-S", "tx"}, {"fnSpaceEndsToggle", "tF-", '!', "iFS", "tx"}, {"spaceUpClearsSpace", "tFS", 's', "tF-", ""}, {"spaceUpWhenUp", "i--", 's', "i--", ""}, {"timerStartsHold", "pF-", 'H', "hF-", "H"}, {"staleTimerInIdle", "i--", 'H', "i--", ""}, {"staleTimerInHold", "hF-", 'H', "hF-", ""}, {"staleTimerInToggle", "t--", 'H', "t--", ""}, {"keyMakesPendingHoldAShortcut", "pF-", 'K', "sF-", "k"}, {"keyCancelsHold", "hF-", 'K', "sF-", "C"}, {"keyLeavesToggle", "tF-", 'K', "tF-", ""}, {"shortcutTakesNoSpace", "sF-", 'S', "sFS", ""}, {"shortcutEndsWithTrigger", "sF-", 'f', "i--", "x"}};
    const Input inputs[] = {Input::fnDown(), Input::fnUp(), Input::spaceDown(false), Input::spaceDown(true),
                            Input::spaceUp(), Input::holdDelayElapsed(), Input::otherKeyDown()};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        Machine m = machine(row.before);
        EXPECT_EQ(letters(m.handle(inputs[std::string_view("FfS!sHK").find(row.input)])), row.actions);
        EXPECT_EQ(m, machine(row.after));
    }
}

} // namespace
