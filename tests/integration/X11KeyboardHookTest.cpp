#include "FakeWorkspace.h"
#include "QtPrinters.h"
#include "TextTarget.h"
#include "XTestKeyboard.h"

#include "models/QuorlaError.h"
#include "models/TriggerKey.h"
#include "platform/linux/X11KeyboardHook.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "support/PlatformWords.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

class X11KeyboardHookTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
        ASSERT_TRUE(keys.isOpen());
        X11Workspace desktop;
        target.emplace(desktop, QStringLiteral(QUORLA_TEXT_TARGET), QStringList{"widgets", "/dev/null", QString()});
        ASSERT_TRUE(target->application()) << "the key echo target never got the focus";
        monitor.holdStartedHandler = [this] { events.append(QStringLiteral("holdStarted")); };
        monitor.holdEndedHandler = [this] { events.append(QStringLiteral("holdEnded")); };
        monitor.toggleStartedHandler = [this] { events.append(QStringLiteral("toggleStarted")); };
        monitor.toggleEndedHandler = [this] { events.append(QStringLiteral("toggleEnded")); };
        monitor.holdCancelledHandler = [this] { events.append(QStringLiteral("holdCancelled")); };
    }
    // A test that stopped half-way must not leave a key down for the next ones.
    void TearDown() override
    {
        for (const char *keysym : {"space", "Control_R", "Menu", "c"})
            if (keys.isOpen())
                keys.release(keysym);
    }

    // Tests inject keys a few milliseconds apart, as a hand would.
    void press(const char *keysym)
    {
        keys.press(keysym);
        QTest::qWait(10);
    }
    void release(const char *keysym)
    {
        keys.release(keysym);
        QTest::qWait(10);
    }
    void tapSpace()
    {
        press("space");
        release("space");
    }
    void expectEvents(const QStringList &expected)
    {
        (void)QTest::qWaitFor([&] { return events == expected; }, 2000);
        EXPECT_EQ(events, expected);
    }
    // The keys the target saw pressed since the last look.
    QList<int> pressesAtTarget()
    {
        QList<int> pressed;
        for (const auto &key : target->takeKeys(150)) {
            if (key.press)
                pressed.append(key.key);
        }
        return pressed;
    }
    // Trigger + Space starts a toggle and the next Space ends it; the target sees none of
    // those Spaces, not even one sent right behind the trigger. Held first, the trigger
    // starts a hold that the Space promotes. Returns the other keys the target saw.
    QList<int> toggle(const char *trigger, bool holdFirst)
    {
        events.clear();
        QStringList expected;
        keys.press(trigger);
        if (holdFirst)
            expectEvents(expected << QStringLiteral("holdStarted"));
        tapSpace();
        release(trigger);
        QTest::qWait(100); // releasing the trigger ends nothing
        expectEvents(expected << QStringLiteral("toggleStarted"));
        tapSpace();
        expectEvents(expected << QStringLiteral("toggleEnded"));
        const QList<int> pressed = pressesAtTarget();
        EXPECT_FALSE(pressed.contains(Qt::Key_Space)) << "a Space of the gesture reached the target";
        return pressed;
    }

    // Tests send keys through XTest, as remote desktops and key scripts do: they count.
    std::shared_ptr<X11KeyboardHook> hook = std::make_shared<X11KeyboardHook>(TriggerKey::defaultKey());
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    GlobalPushToTalkMonitor monitor{hook, workspace};
    XTestKeyboard keys;
    std::optional<TextTarget> target;
    QStringList events;
};

// Another client holding Space with NumLock disables none of the other combinations; a
// new trigger key works at once, and a non-modifier one is taken for good. Another key
// makes a hold that key's shortcut and reaches the application; Quorla's own keys don't.
TEST_F(X11KeyboardHookTest, theTriggerHoldsTogglesAndLetsOtherKeysThrough)
{
    XTestKeyboard otherClient;
    ASSERT_TRUE(otherClient.grabSpace(otherClient.numLockMask()));
    monitor.installMonitors();
    X11KeySynthesizer quorlaKeys;
    const std::tuple<const char *, std::function<void()>, QStringList> holds[] = {
        {"nothing else", [] {}, {"holdStarted", "holdEnded"}},
        {"a key", [&] { press("c"); release("c"); }, {"holdStarted", "holdCancelled"}},
        {"Quorla's own key", [&] { quorlaKeys.sendBackspace(); }, {"holdStarted", "holdEnded"}},
    };
    for (const auto &[name, sendKey, expected] : holds) {
        SCOPED_TRACE(name);
        events.clear();
        press("Control_R");
        expectEvents({"holdStarted"});
        sendKey();
        release("Control_R");
        expectEvents(expected);
    }
    EXPECT_EQ(pressesAtTarget().count(Qt::Key_C), 1) << "the shortcut's key reaches the application";

    for (int round = 0; round < 5; ++round)
        EXPECT_TRUE(toggle("Control_R", false).contains(Qt::Key_Control)) << "Ctrl shortcuts keep working";
    tapSpace();
    EXPECT_EQ(pressesAtTarget(), QList<int>{Qt::Key_Space}) << "Space is let go after the toggle";

    monitor.setTriggerKey(*TriggerKey::withId(QStringLiteral("menu")));
    ASSERT_TRUE(hook->waitForGrabs(5s));
    events.clear();
    press("Control_R");
    QTest::qWait(150);
    release("Control_R");
    EXPECT_TRUE(events.isEmpty()) << "the old trigger still counts";
    EXPECT_FALSE(toggle("Menu", true).contains(Qt::Key_Menu)) << "Menu reached the target";
}

TEST(X11KeyboardHookInstall, failuresSayWhatIsMissing)
{
    ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
    QProcess server; // an X server of its own, without XTest
    const QByteArray display = qgetenv("DISPLAY");
    const auto restore = qScopeGuard([&] {
        qputenv("DISPLAY", display);
        qunsetenv("WAYLAND_DISPLAY");
        server.terminate();
        server.waitForFinished(5000);
    });
    server.start(QStringLiteral("Xvfb"), {"-displayfd", "1", "-nolisten", "tcp", "-extension", "XTEST"});
    ASSERT_TRUE(server.waitForReadyRead(10000)) << "Xvfb did not start";
    const QByteArray withoutXTest = ':' + server.readAllStandardOutput().trimmed();
    // display, under Wayland, trigger, the cause told after the sentence (none: silent), installed
    const std::tuple<QByteArray, bool, const char *, QString, bool> cases[] = {
        {":9999", false, "rightControl", "No X11 display can be reached.", false},
        {withoutXTest, false, "rightControl", "", true}, // only pasting needs XTest
        {display, false, "fn", "This keyboard has no Fn key that X11 can see: choose another trigger key in Settings.", false},
        {display, true, "menu", "In a Wayland session, Menu and Menu + Space only work while an X11 application has focus.", true},
    };
    for (const auto &[xDisplay, wayland, triggerId, cause, installed] : cases) {
        SCOPED_TRACE(xDisplay.toStdString() + triggerId);
        qputenv("DISPLAY", xDisplay);
        if (wayland)
            qputenv("WAYLAND_DISPLAY", "wayland-test");
        const TriggerKey trigger = *TriggerKey::withId(QLatin1String(triggerId));
        X11KeyboardHook hook(trigger);
        QString said;
        try {
            said = hook.install({}).notice.value_or(QString());
        } catch (const QuorlaError &error) {
            EXPECT_EQ(error.kind(), QuorlaError::Kind::hotkeyRegistrationFailed);
            said = error.errorDescription(PlatformWords::linuxDesktop());
        }
        const QString sentence = PlatformWords::linuxDesktop().monitorOutsideWindowFailure.arg(trigger.displayName);
        EXPECT_EQ(said, cause.isEmpty() ? QString() : sentence + u' ' + cause);
        EXPECT_EQ(hook.isInstalled(), installed);
    }
}

} // namespace
