#include "platform/SpaceCaptureTracker.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t rightCtrl = 105;
constexpr std::uint8_t otherRightCtrl = 108;

TEST(SpaceCaptureTracker, grabsSpaceFromTriggerPressUntilReleaseWhenNoToggleRuns)
{
    SpaceCaptureTracker tracker;
    EXPECT_FALSE(tracker.wantsSpaceGrab());
    EXPECT_EQ(tracker.triggerKeyChanged(rightCtrl, true), std::optional<bool>(true));
    EXPECT_TRUE(tracker.wantsSpaceGrab());
    EXPECT_EQ(tracker.triggerKeyChanged(rightCtrl, false), std::optional<bool>(false));
    EXPECT_FALSE(tracker.wantsSpaceGrab());

    const auto plain = tracker.spaceDown();
    EXPECT_FALSE(plain.swallowed);
    EXPECT_FALSE(plain.triggerFlag);
}

TEST(SpaceCaptureTracker, aToggleKeepsTheGrabUntilTheSpaceThatEndsIt)
{
    SpaceCaptureTracker tracker;
    tracker.triggerKeyChanged(rightCtrl, true);
    const auto start = tracker.spaceDown();
    EXPECT_TRUE(start.swallowed);
    EXPECT_TRUE(start.triggerFlag);
    tracker.spaceUp();
    tracker.triggerKeyChanged(rightCtrl, false);
    EXPECT_TRUE(tracker.wantsSpaceGrab()) << "the toggle is running";

    EXPECT_TRUE(tracker.spaceDown().swallowed);
    EXPECT_FALSE(tracker.wantsSpaceGrab()) << "that Space ended the toggle";
    tracker.spaceUp();
    EXPECT_FALSE(tracker.spaceDown().swallowed);
}

TEST(SpaceCaptureTracker, repeatsFollowTheirFirstPress)
{
    SpaceCaptureTracker tracker;
    tracker.triggerKeyChanged(rightCtrl, true);
    ASSERT_TRUE(tracker.spaceDown().swallowed);
    const auto repeat = tracker.spaceDown();
    EXPECT_TRUE(repeat.autoRepeat);
    EXPECT_TRUE(repeat.swallowed);

    // A Space already reaching the application keeps its repeats and release there.
    SpaceCaptureTracker held;
    ASSERT_FALSE(held.spaceDown().swallowed);
    held.triggerKeyChanged(rightCtrl, true);
    EXPECT_FALSE(held.wantsSpaceGrab());
    EXPECT_FALSE(held.spaceDown().swallowed);
    held.spaceUp();
    EXPECT_TRUE(held.wantsSpaceGrab()) << "the next Space with the trigger down starts a toggle";
    EXPECT_TRUE(held.spaceDown().swallowed);
}

TEST(SpaceCaptureTracker, aTriggerWithTwoKeysChangesOnlyOnItsFirstPressAndLastRelease)
{
    SpaceCaptureTracker tracker;
    EXPECT_EQ(tracker.triggerKeyChanged(rightCtrl, true), std::optional<bool>(true));
    EXPECT_EQ(tracker.triggerKeyChanged(otherRightCtrl, true), std::nullopt);
    EXPECT_EQ(tracker.triggerKeyChanged(rightCtrl, true), std::nullopt) << "auto-repeat";
    EXPECT_EQ(tracker.triggerKeyChanged(rightCtrl, false), std::nullopt);
    EXPECT_TRUE(tracker.isTriggerDown());
    EXPECT_EQ(tracker.triggerKeyChanged(otherRightCtrl, false), std::optional<bool>(false));
    EXPECT_EQ(tracker.triggerKeyChanged(otherRightCtrl, false), std::nullopt);
}

TEST(SpaceCaptureTracker, aFreshTriggerPressEndsTheToggleAndItsReleaseLetsSpaceGo)
{
    SpaceCaptureTracker tracker;
    tracker.triggerKeyChanged(rightCtrl, true);
    tracker.spaceDown();
    tracker.spaceUp();
    tracker.triggerKeyChanged(rightCtrl, false);
    tracker.triggerKeyChanged(rightCtrl, true);
    EXPECT_TRUE(tracker.wantsSpaceGrab()) << "held again";
    tracker.triggerKeyChanged(rightCtrl, false);
    EXPECT_FALSE(tracker.wantsSpaceGrab());

    tracker.triggerKeyChanged(rightCtrl, true);
    tracker.reset();
    EXPECT_FALSE(tracker.wantsSpaceGrab());
    EXPECT_FALSE(tracker.isTriggerDown());
}

} // namespace
