// Keyboard latencies on a real X server (run inside scripts/desktop-session):
//  - trigger press (XTest) -> the monitor's triggerKeyChanged on the main thread;
//  - trigger held, Space press -> the toggle-started handler;
//  - plain Space press -> its arrival in a target application, with the hook
//    installed and without it;
//  - how soon after the trigger a Space is already taken (the grab follows the
//    trigger's press, so a Space sent right after it can still leak).
// Usage: bench_x11_keyboard_hook [iterations]
#include "TextTarget.h"
#include "XTestKeyboard.h"

#include "models/TriggerKey.h"
#include "platform/Workspace.h"
#include "platform/linux/X11KeyboardHook.h"
#include "platform/linux/X11Workspace.h"
#include "services/GlobalPushToTalkMonitor.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

class NoWorkspace : public Workspace
{
public:
    ApplicationHandlePtr frontmostApplication() override { return nullptr; }
    bool openSettingsPane(const QString &) override { return false; }
};

void report(const char *what, std::vector<double> samples)
{
    if (samples.empty()) {
        std::printf("%-44s no samples\n", what);
        return;
    }
    std::sort(samples.begin(), samples.end());
    const auto at = [&](double q) { return samples[std::min(samples.size() - 1, size_t(q * samples.size()))]; };
    std::printf("%-44s n=%3zu  median %.3f ms  p95 %.3f ms  max %.3f ms\n", what, samples.size(), at(0.5), at(0.95),
                samples.back());
}

double millisecondsSince(Clock::time_point start, Clock::time_point end)
{
    return std::chrono::duration<double, std::milli>(end - start).count();
}

// Sends a key from the event loop, then runs the loop until done() is called.
template <typename Send>
bool sendAndWait(QEventLoop &loop, Send send)
{
    bool timedOut = false;
    QTimer timeout;
    timeout.setSingleShot(true);
    QObject::connect(&timeout, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    timeout.start(2000);
    QTimer::singleShot(0, send);
    loop.exec();
    return !timedOut;
}

// The first press of key to arrive; the other keys that came with it are dropped.
std::optional<TextTarget::Key> waitForPress(TextTarget &target, int key)
{
    for (const QDeadlineTimer deadline(2000); !deadline.hasExpired();) {
        for (const TextTarget::Key &arrived : target.takeKeys(1))
            if (arrived.press && arrived.key == key)
                return arrived;
    }
    return std::nullopt;
}

std::vector<double> plainSpaceDelays(XTestKeyboard &keys, TextTarget &target, int iterations)
{
    std::vector<double> delays;
    for (int i = 0; i < iterations; ++i) {
        const auto sentAt = Clock::now();
        keys.press("space");
        const auto arrived = waitForPress(target, Qt::Key_Space);
        keys.release("space");
        QTest::qWait(5);
        if (arrived)
            delays.push_back(millisecondsSince(sentAt, Clock::time_point(std::chrono::microseconds(
                                                           arrived->arrivedAtMicroseconds))));
    }
    target.takeKeys(50);
    return delays;
}

// Of `trials` trigger + Space gestures with the Space sent `gap` after the trigger,
// how many Spaces reached the target.
int leakedSpaces(XTestKeyboard &keys, TextTarget &target, std::chrono::microseconds gap, int trials)
{
    target.takeKeys(20);
    for (int i = 0; i < trials; ++i) {
        keys.press("Control_R");
        const auto until = Clock::now() + gap;
        while (Clock::now() < until) {
        }
        keys.press("space");
        keys.release("space");
        QTest::qWait(5);
        keys.release("Control_R");
        QTest::qWait(5);
        keys.press("space"); // ends the toggle
        keys.release("space");
        QTest::qWait(10);
    }
    int leaked = 0;
    for (const auto &key : target.takeKeys(100))
        leaked += key.press && key.key == Qt::Key_Space;
    return leaked;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int iterations = argc > 1 ? std::max(1, atoi(argv[1])) : 100;

    XTestKeyboard keys;
    X11Workspace desktop;
    TextTarget target(desktop, QStringLiteral(QUORLA_TEXT_TARGET), {"widgets", "/dev/null", QString()});
    if (!keys.isOpen() || !target.application()) {
        std::fprintf(stderr, "needs the headless desktop (scripts/desktop-session)\n");
        return 1;
    }

    const auto withoutHook = plainSpaceDelays(keys, target, iterations);

    auto hook = std::make_shared<X11KeyboardHook>(TriggerKey::defaultKey());
    GlobalPushToTalkMonitor monitor(hook, std::make_shared<NoWorkspace>());
    QEventLoop loop;
    Clock::time_point handledAt;
    const auto handled = [&] {
        handledAt = Clock::now();
        loop.quit();
    };
    monitor.toggleStartedHandler = handled;
    monitor.toggleEndedHandler = handled;
    QObject::connect(&monitor, &GlobalPushToTalkMonitor::triggerKeyChanged, &loop, handled);
    monitor.installMonitors();

    std::vector<double> triggerLatencies;
    std::vector<double> toggleLatencies;
    for (int i = 0; i < iterations; ++i) {
        Clock::time_point sentAt;
        if (sendAndWait(loop, [&] { sentAt = Clock::now(); keys.press("Control_R"); }))
            triggerLatencies.push_back(millisecondsSince(sentAt, handledAt));
        QTest::qWait(5);
        if (sendAndWait(loop, [&] { sentAt = Clock::now(); keys.press("space"); }))
            toggleLatencies.push_back(millisecondsSince(sentAt, handledAt));
        keys.release("space");
        QTest::qWait(5);
        sendAndWait(loop, [&] { keys.release("Control_R"); });
        QTest::qWait(5);
        sendAndWait(loop, [&] { keys.press("space"); }); // ends the toggle
        keys.release("space");
        QTest::qWait(5);
    }
    target.takeKeys(50);
    const auto withHook = plainSpaceDelays(keys, target, iterations);

    std::vector<std::pair<int, int>> leaks;
    for (const int gapMicroseconds : {0, 250, 500, 1000, 2000, 5000})
        leaks.emplace_back(gapMicroseconds, leakedSpaces(keys, target, std::chrono::microseconds(gapMicroseconds), 40));

    report("trigger press -> triggerKeyChanged", triggerLatencies);
    report("trigger + Space -> toggle-started handler", toggleLatencies);
    report("plain Space -> target, no hook", withoutHook);
    report("plain Space -> target, hook installed", withHook);
    for (const auto &[gap, leaked] : leaks)
        std::printf("Space %4d us after the trigger: %2d of 40 reached the target\n", gap, leaked);
    return 0;
}
