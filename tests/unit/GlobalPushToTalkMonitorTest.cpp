#include "FakeKeyboardHook.h"
#include "FakeWorkspace.h"

#include "models/TriggerKey.h"
#include "services/GlobalPushToTalkMonitor.h"

#include <QTest>
#include <gtest/gtest.h>

namespace {

// Steps: T/t the trigger down/up, S/s Space down/up, R a Space repeat, H the hold delay
// running out, O another key down, K the trigger key changed, G the desktop's own toggle
// shortcut. Space steps leave X when taken from the application, P when let through.
TEST(GlobalPushToTalkMonitor, gesturesGiveTheirEventsTakeOnlyTheirSpacesAndEndWithAKeyChange)
{
    auto keyboard = std::make_shared<FakeKeyboardHook>();
    auto workspace = std::make_shared<FakeWorkspace>();
    auto editor = std::make_shared<FakeApplication>(42, "Editor");
    workspace->frontmost = editor;
    GlobalPushToTalkMonitor monitor{keyboard, workspace};
    QStringList events;
    monitor.holdStartedHandler = [&] { events.append("holdStarted"); };
    monitor.holdEndedHandler = [&] { events.append("holdEnded"); };
    monitor.toggleStartedHandler = [&] { events.append("toggleStarted"); };
    monitor.toggleEndedHandler = [&] { events.append("toggleEnded"); };
    monitor.holdCancelledHandler = [&] { events.append("holdCancelled"); };
    const QStringList hold{"holdStarted", "holdEnded"}, toggle{"toggleStarted", "toggleEnded"};
    const struct {
        const char *name, *steps, *spaces;
        QStringList events;
        bool toggleRunning = false;
    } cases[] = {
        {"plain Space", "Ss", "PP", {}},
        {"toggle", "TSRstSs", "XPXXX", toggle},
        {"toggle running", "TSst", "XX", {"toggleStarted"}, true},
        {"shortcut", "TOHSst", "PP", {}},
        // A Space released after the change reaches the application.
        {"change when idle", "Ks", "P", {}},
        {"change in a pending hold", "TKs", "P", {}},
        {"change in a hold", "THKs", "P", hold},
        {"change in a toggle", "TStKs", "XP", toggle},
        {"desktop toggle, then a hold", "GGTHt", "", toggle + hold},
        {"desktop toggle in a hold", "THGtG", "", {"holdStarted", "toggleStarted", "toggleEnded"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        monitor.installMonitors();
        events.clear();
        QString spaces;
        for (const char step : std::string_view(c.steps)) {
            if (step == 'T' || step == 't')
                keyboard->trigger(step == 'T');
            else if (step == 'H')
                monitor.apply(PushToTalkTriggerInput::holdDelayElapsed());
            else if (step == 'G')
                keyboard->toggle();
            else if (step == 'K')
                monitor.setTriggerKey(*TriggerKey::withId("menu"));
            else if (step == 'O')
                keyboard->otherKey();
            else
                spaces += (step == 's' ? keyboard->spaceUp() : keyboard->spaceDown(step == 'R')) ? 'X' : 'P';
        }
        EXPECT_EQ(spaces, c.spaces);
        EXPECT_EQ(events, c.events);
        EXPECT_EQ(keyboard->spaceCaptureWanted, c.toggleRunning);
        EXPECT_EQ(monitor.capturedTargetApplication(), c.toggleRunning ? editor : nullptr);
        monitor.stop();
    }
}

} // namespace
