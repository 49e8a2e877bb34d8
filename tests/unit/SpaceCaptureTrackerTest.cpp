#include "platform/SpaceCaptureTracker.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// Steps: T/t the trigger key down/up, O/o the trigger's other key down/up, S/s Space
// down/up, K another key down, r reset. Each step leaves what it gave (D/U: the trigger
// went down/up, -: no change; X/P: Space swallowed/passed, with ! for the trigger flag and
// ~ for a repeat; k: a shortcut began; . nothing), then + or - for whether Space is
// grabbed now.
std::string traced(const std::string &steps)
{
    SpaceCaptureTracker tracker;
    std::string trace;
    for (const char step : steps) {
        if (step == 'S') {
            const auto press = tracker.spaceDown();
            trace += press.swallowed ? 'X' : 'P';
            trace += std::string(press.triggerFlag ? "!" : "") + (press.autoRepeat ? "~" : "");
        } else if (step == 'K') {
            trace += tracker.otherKeyDown() ? 'k' : '.';
        } else if (step == 's' || step == 'r') {
            step == 's' ? tracker.spaceUp() : tracker.reset();
            trace += '.';
        } else {
            const auto changed = tracker.triggerKeyChanged(std::toupper(step) == 'T' ? 105 : 108, std::isupper(step));
            trace += changed ? (*changed ? 'D' : 'U') : '-';
        }
        trace += tracker.wantsSpaceGrab() ? '+' : '-';
    }
    return trace;
}

TEST(SpaceCaptureTracker, grabsSpaceExactlyWhileTheGestureNeedsIt)
{
    const struct {
        const char *name, *steps, *trace;
    } cases[] = {
        {"the trigger alone grabs until released", "TtS", "D+U-P-"},
        {"repeats pass, and a held Space is not grabbed", "TSS", "D+X!-P!~-"},
        {"a Space already through keeps its release", "STSsS", "P-D-P!~-.+X!-"},
        {"two keys change the trigger once", "TOTtoo", "D+-+-+-+U---"},
        {"a fresh press ends the toggle", "TSstTtTr", "D+X!-.+U+D+U-D+.-"},
        {"a shortcut takes no Space", "TKKSst", "D+k-.-P!-.-U-"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(traced(c.steps), c.trace) << c.name << ": " << c.steps;
}

} // namespace
