#include "FakeWorkspace.h"

#include "models/TriggerKey.h"
#include "platform/linux/SwayInputSourceProvider.h"
#include "platform/linux/SwayKeyboardHook.h"
#include "services/GlobalPushToTalkMonitor.h"

#include <QProcess>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// The headless sway of scripts/desktop-session. CI always starts it; elsewhere it may
// be missing, and then these tests say so and skip.
class SwayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (socket.isEmpty() && qEnvironmentVariable("CI") != u"true")
            GTEST_SKIP() << "no headless sway (QUORLA_TEST_SWAYSOCK): run scripts/desktop-session with sway installed";
        ASSERT_FALSE(socket.isEmpty()) << "CI needs the headless sway";
    }

    // Keys from a virtual keyboard of its own, in one go: -P/-p press and release a keysym,
    // -s pauses (milliseconds) as a hand would between keys.
    void type(const QStringList &arguments)
    {
        QProcess wtype;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("WAYLAND_DISPLAY"), qEnvironmentVariable("QUORLA_TEST_WAYLAND_DISPLAY"));
        wtype.setProcessEnvironment(environment);
        wtype.start(QStringLiteral("wtype"), arguments);
        ASSERT_TRUE(QTest::qWaitFor([&] { return wtype.state() == QProcess::NotRunning; }, 20000));
        ASSERT_EQ(wtype.exitCode(), 0) << wtype.readAllStandardError().toStdString();
    }

    // True when sway carried the command out.
    bool swaymsg(const QString &command)
    {
        QProcess process;
        process.start(QStringLiteral("swaymsg"), {QStringLiteral("-s"), socket, command});
        return process.waitForFinished(10000) && process.exitCode() == 0;
    }

    const QString socket = qEnvironmentVariable("QUORLA_TEST_SWAYSOCK");
};

// sway names the active layout only by its description; the registry gives it back its
// name and languages, and every switch is a change notice.
TEST_F(SwayTest, theActiveLayoutFollowsSway)
{
    SwayInputSourceProvider provider(socket);
    int changes = 0;
    provider.startObservingChanges([&] { ++changes; });
    const std::tuple<QString, QString, QString> steps[] = {
        {R"(input type:keyboard xkb_layout "us,de")", "xkb:us", "en"},
        {"input type:keyboard xkb_switch_layout 1", "xkb:de", "de"},
        {R"(input type:keyboard xkb_layout "fr")", "xkb:fr", "fr"},
    };
    for (const auto &[command, identifier, language] : steps) {
        const int before = changes;
        ASSERT_TRUE(swaymsg(command));
        (void)QTest::qWaitFor([&, &identifier = identifier] {
            return changes > before && provider.currentInputSource().value_or(InputSourceInfo{}).identifier == identifier;
        },
                              5000);
        const InputSourceInfo source = provider.currentInputSource().value_or(InputSourceInfo{});
        EXPECT_EQ(source.identifier, identifier) << command.toStdString();
        EXPECT_TRUE(source.languages.contains(language)) << source.languages.join(u' ').toStdString();
    }
    EXPECT_TRUE(swaymsg(QStringLiteral("input type:keyboard xkb_layout us")));
}

// A run that ended without unbinding (killed, crashed) leaves its bindings, Space's too,
// to the next: it removes them even for a trigger key chosen since.
TEST_F(SwayTest, bindingsLeftByAnEndedRunAreRemoved)
{
    SwayKeyboardHook ended(*TriggerKey::withId(QStringLiteral("scrollLock")), socket);
    ended.install({});
    ended.setSpaceCaptureWanted(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return ended.isSettled(); }, 5000));
    ended.abandon();
    SwayKeyboardHook next(TriggerKey::defaultKey(), socket);
    next.install({});
    ASSERT_TRUE(QTest::qWaitFor([&] { return next.isSettled(); }, 5000));
    for (const char *binding : {"--release Scroll_Lock", "--no-repeat space"})
        EXPECT_FALSE(swaymsg(QStringLiteral("unbindsym ") + binding)) << binding;
}

struct KeysCase {
    const char *name;
    QString keys;
    QStringList expected;
};

// sway never reports the trigger's release after another key met it: a Space ends the
// trigger at its own release, any other key leaves it to the next press of the trigger.
const KeysCase keysCases[] = {
    {"hold", "-P Control_R -s 400 -p Control_R", {"holdStarted", "holdEnded"}},
    {"toggle", "-P Control_R -s 400 -P space -p space -s 200 -p Control_R -s 400 -P space -p space", {"holdStarted", "toggleStarted", "toggleEnded"}},
    {"toggleEndedByTrigger", "-P Control_R -s 400 -P space -p space -s 200 -p Control_R -s 400 -P Control_R -p Control_R", {"holdStarted", "toggleStarted", "toggleEnded"}},
    {"lostRelease", "-P Control_R -s 400 -P a -p a -p Control_R -s 400 -P Control_R -s 400 -P space -p space -p Control_R", {"holdStarted", "holdEnded"}},
};

void PrintTo(const KeysCase &keys, std::ostream *out)
{
    *out << keys.name;
}

class SwayKeyboardHookTest : public SwayTest, public ::testing::WithParamInterface<KeysCase>
{
};

TEST_P(SwayKeyboardHookTest, bindingsCarryHoldAndToggle)
{
    auto hook = std::make_shared<SwayKeyboardHook>(TriggerKey::defaultKey(), socket);
    GlobalPushToTalkMonitor monitor{hook, std::make_shared<FakeWorkspace>()};
    QStringList events;
    monitor.holdStartedHandler = [&] { events << QStringLiteral("holdStarted"); };
    monitor.holdEndedHandler = [&] { events << QStringLiteral("holdEnded"); };
    monitor.toggleStartedHandler = [&] { events << QStringLiteral("toggleStarted"); };
    monitor.toggleEndedHandler = [&] { events << QStringLiteral("toggleEnded"); };
    monitor.installMonitors();
    ASSERT_TRUE(QTest::qWaitFor([&] { return hook->isSettled(); }, 5000));

    type(GetParam().keys.split(u' '));
    (void)QTest::qWaitFor([&] { return events == GetParam().expected && hook->isSettled(); }, 3000);
    EXPECT_EQ(events, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Sway, SwayKeyboardHookTest, ::testing::ValuesIn(keysCases),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
