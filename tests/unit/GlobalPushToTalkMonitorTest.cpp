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
        monitor.holdStartedHandler = [this] { events.append(QStringLiteral("holdStarted")); };
        monitor.holdEndedHandler = [this] { events.append(QStringLiteral("holdEnded")); };
        monitor.toggleStartedHandler = [this] { events.append(QStringLiteral("toggleStarted")); };
        monitor.toggleEndedHandler = [this] { events.append(QStringLiteral("toggleEnded")); };
        monitor.installMonitors();
    }

    std::shared_ptr<FakeKeyboardHook> keyboard = std::make_shared<FakeKeyboardHook>();
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, QStringLiteral("Editor"));
    GlobalPushToTalkMonitor monitor{keyboard, workspace};
    QStringList events;
};

TEST_F(GlobalPushToTalkMonitorTest, holdingTheTriggerStartsAHoldAfterTheDelay)
{
    keyboard->trigger(true);
    EXPECT_EQ(monitor.capturedTargetApplication(), editor);
    EXPECT_TRUE(events.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{QStringLiteral("holdStarted")}, 2000);
    keyboard->trigger(false);
    EXPECT_EQ(events, QStringList({QStringLiteral("holdStarted"), QStringLiteral("holdEnded")}));
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

TEST_F(GlobalPushToTalkMonitorTest, aPlainSpacePassesThrough)
{
    EXPECT_FALSE(keyboard->spaceDown());
    EXPECT_FALSE(keyboard->spaceUp());
    EXPECT_TRUE(events.isEmpty());
    EXPECT_FALSE(keyboard->spaceCaptureWanted);
}

TEST_F(GlobalPushToTalkMonitorTest, triggerPlusSpaceSwallowsBothSpaceEvents)
{
    keyboard->trigger(true);
    EXPECT_TRUE(keyboard->spaceCaptureWanted);
    EXPECT_TRUE(keyboard->spaceDown());
    EXPECT_TRUE(keyboard->spaceUp());
    keyboard->trigger(false);
    EXPECT_EQ(events, QStringList{QStringLiteral("toggleStarted")});
    EXPECT_TRUE(keyboard->spaceCaptureWanted) << "the next Space ends the toggle";

    EXPECT_TRUE(keyboard->spaceDown());
    EXPECT_TRUE(keyboard->spaceUp());
    EXPECT_EQ(events, QStringList({QStringLiteral("toggleStarted"), QStringLiteral("toggleEnded")}));
    EXPECT_FALSE(keyboard->spaceCaptureWanted);
    QTest::qWait(150);
    EXPECT_EQ(events.size(), 2) << "the cancelled hold timer never fires";
}

TEST_F(GlobalPushToTalkMonitorTest, autoRepeatedSpacesAreNeverFedOrSwallowed)
{
    keyboard->trigger(true);
    ASSERT_TRUE(keyboard->spaceDown());
    EXPECT_FALSE(keyboard->spaceDown(/*autoRepeat=*/true));
    EXPECT_FALSE(keyboard->spaceDown(/*autoRepeat=*/true));
    EXPECT_EQ(events, QStringList{QStringLiteral("toggleStarted")});
}

TEST_F(GlobalPushToTalkMonitorTest, aSpaceUpWhoseDownPassedIsPassedButClearsTheMachine)
{
    ASSERT_FALSE(keyboard->spaceDown());
    EXPECT_TRUE(monitor.triggerState().isSpacePressed);
    EXPECT_FALSE(keyboard->spaceUp());
    EXPECT_FALSE(monitor.triggerState().isSpacePressed);
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
    const TriggerKey menu = *TriggerKey::withId(QStringLiteral("menu"));
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
        EXPECT_EQ(monitor.shortcut().displayString, QStringLiteral("Menu"));
        EXPECT_FALSE(keyboard->spaceUp()) << "a Space released after the change reaches the application";
    }
    events.clear();
    QTest::qWait(150);
    EXPECT_TRUE(events.isEmpty()) << "no timer of an earlier gesture fires";
}

TEST_F(GlobalPushToTalkMonitorTest, aTriggerTheKeyboardCannotSendIsReported)
{
    keyboard->triggerKeyFailure = QuorlaError::hotkeyRegistrationFailed(QStringLiteral("no such key"));
    EXPECT_THROW(monitor.setTriggerKey(*TriggerKey::withId(QStringLiteral("fn"))), QuorlaError);
    EXPECT_FALSE(monitor.isInstalled());
}

} // namespace
