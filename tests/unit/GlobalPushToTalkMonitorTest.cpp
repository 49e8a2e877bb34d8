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

// Steps: T/t the trigger down/up, S/s Space down/up, R a Space repeat, H the hold delay
// running out. Space steps leave X when taken from the application, P when let through.
TEST_F(GlobalPushToTalkMonitorTest, gesturesGiveTheirEventsAndTakeOnlyTheirSpaces)
{
    const struct {
        const char *name, *steps, *spaces;
        QStringList events;
        bool spaceWantedAfter;
    } cases[] = {
        {"hold", "THt", "", {"holdStarted", "holdEnded"}, false},
        {"tap", "Tt", "", {}, false},
        {"plain Space", "Ss", "PP", {}, false},
        {"toggle", "TSRstSs", "XPXXX", {"toggleStarted", "toggleEnded"}, false},
        {"toggle running", "TSst", "XX", {"toggleStarted"}, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        events.clear();
        QString spaces;
        for (const char step : std::string_view(c.steps)) {
            if (step == 'T' || step == 't')
                keyboard->trigger(step == 'T');
            else if (step == 'H')
                monitor.apply(PushToTalkTriggerInput::holdDelayElapsed());
            else
                spaces += (step == 's' ? keyboard->spaceUp() : keyboard->spaceDown(step == 'R')) ? 'X' : 'P';
            if (step == 'T')
                EXPECT_EQ(monitor.capturedTargetApplication(), editor);
        }
        EXPECT_EQ(spaces, c.spaces);
        EXPECT_EQ(events, c.events);
        EXPECT_EQ(keyboard->spaceCaptureWanted, c.spaceWantedAfter);
        if (!c.spaceWantedAfter)
            EXPECT_EQ(monitor.capturedTargetApplication(), nullptr);
        monitor.stop();
        monitor.installMonitors();
    }
    events.clear();
    QTest::qWait(150);
    EXPECT_TRUE(events.isEmpty()) << "no hold timer of an ended gesture fires";
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

} // namespace
