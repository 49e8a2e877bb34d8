#include "FakeKeyboardHook.h"
#include "FakeWorkspace.h"

#include "models/TriggerKey.h"
#include "services/GlobalPushToTalkMonitor.h"

#include <QTest>
#include <gtest/gtest.h>

namespace {

class GlobalPushToTalkMonitorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        workspace->frontmost = editor;
        monitor.holdStartedHandler = [this] { events.append("holdStarted"); };
        monitor.holdEndedHandler = [this] { events.append("holdEnded"); };
        monitor.toggleStartedHandler = [this] { events.append("toggleStarted"); };
        monitor.toggleEndedHandler = [this] { events.append("toggleEnded"); };
        monitor.installMonitors();
    }

    std::shared_ptr<FakeKeyboardHook> keyboard = std::make_shared<FakeKeyboardHook>();
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, "Editor");
    GlobalPushToTalkMonitor monitor{keyboard, workspace};
    QStringList events;
};

TEST_F(GlobalPushToTalkMonitorTest, holdingTheTriggerStartsAHoldAfterTheDelay)
{
    keyboard->trigger(true);
    EXPECT_EQ(monitor.capturedTargetApplication(), editor);
    EXPECT_TRUE(events.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"holdStarted"}, 2000);
    keyboard->trigger(false);
    EXPECT_EQ(events, QStringList({"holdStarted", "holdEnded"}));
    EXPECT_EQ(monitor.capturedTargetApplication(), nullptr);
}

TEST_F(GlobalPushToTalkMonitorTest, aQuickTapCancelsTheTimerAndClearsTheTarget)
{
    keyboard->trigger(true);
    keyboard->trigger(false);
    QTest::qWait(200);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(monitor.capturedTargetApplication(), nullptr);
}

TEST_F(GlobalPushToTalkMonitorTest, aPlainSpacePassesThroughButIsTracked)
{
    EXPECT_FALSE(keyboard->spaceDown());
    EXPECT_TRUE(monitor.triggerState().isSpacePressed);
    EXPECT_FALSE(keyboard->spaceUp());
    EXPECT_FALSE(monitor.triggerState().isSpacePressed);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_FALSE(keyboard->spaceCaptureWanted);
}

TEST_F(GlobalPushToTalkMonitorTest, triggerPlusSpaceSwallowsBothSpaceEvents)
{
    keyboard->trigger(true);
    EXPECT_TRUE(keyboard->spaceCaptureWanted);
    EXPECT_TRUE(keyboard->spaceDown());
    EXPECT_FALSE(keyboard->spaceDown(/*autoRepeat=*/true)) << "a repeat is neither fed nor swallowed";
    EXPECT_TRUE(keyboard->spaceUp());
    keyboard->trigger(false);
    EXPECT_EQ(events, QStringList{"toggleStarted"});
    EXPECT_TRUE(keyboard->spaceCaptureWanted) << "the next Space ends the toggle";

    EXPECT_TRUE(keyboard->spaceDown());
    EXPECT_TRUE(keyboard->spaceUp());
    EXPECT_EQ(events, QStringList({"toggleStarted", "toggleEnded"}));
    EXPECT_FALSE(keyboard->spaceCaptureWanted);
    QTest::qWait(150);
    EXPECT_EQ(events.size(), 2) << "the cancelled hold timer never fires";
}

TEST_F(GlobalPushToTalkMonitorTest, stopResetsEverything)
{
    keyboard->trigger(true);
    monitor.stop();
    QTest::qWait(150);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(monitor.triggerState(), PushToTalkTriggerStateMachine{});
    EXPECT_EQ(monitor.capturedTargetApplication(), nullptr);
    EXPECT_FALSE(monitor.isInstalled());
}

TEST_F(GlobalPushToTalkMonitorTest, changingTheTriggerEndsTheGestureItStarted)
{
    const TriggerKey menu = *TriggerKey::withId("menu");
    const struct {
        const char *name;
        std::function<void()> gesture;
        QStringList expected;
    } cases[] = {
        {"idle", [] {}, {}},
        {"pending hold", [this] { keyboard->trigger(true); }, {}},
        {"hold", [this] { keyboard->trigger(true); monitor.apply(PushToTalkTriggerInput::holdDelayElapsed()); },
         {"holdStarted", "holdEnded"}},
        {"toggle", [this] { keyboard->trigger(true); keyboard->spaceDown(); keyboard->trigger(false); },
         {"toggleStarted", "toggleEnded"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        events.clear();
        c.gesture();
        monitor.setTriggerKey(menu);
        EXPECT_EQ(events, c.expected);
        EXPECT_EQ(monitor.triggerState(), PushToTalkTriggerStateMachine{});
        EXPECT_EQ(monitor.capturedTargetApplication(), nullptr);
        EXPECT_FALSE(keyboard->spaceCaptureWanted);
        EXPECT_EQ(monitor.shortcut().displayString, "Menu");
        EXPECT_FALSE(keyboard->spaceUp()) << "a Space released after the change reaches the application";
    }
    events.clear();
    QTest::qWait(150);
    EXPECT_TRUE(events.isEmpty()) << "no timer of an earlier gesture fires";
}

TEST_F(GlobalPushToTalkMonitorTest, aTriggerTheKeyboardCannotSendIsReported)
{
    keyboard->triggerKeyFailure = QuorlaError::hotkeyRegistrationFailed("no such key");
    EXPECT_THROW(monitor.setTriggerKey(*TriggerKey::withId("fn")), QuorlaError);
    EXPECT_FALSE(monitor.isInstalled());
}

} // namespace
