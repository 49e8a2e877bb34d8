#include "FakeAccessibility.h"
#include "TextTarget.h"

#include "models/QuorlaError.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/DesktopSessionProbe.h"
#include "platform/linux/KdeInputSourceProvider.h"
#include "platform/linux/PortalKeySynthesizer.h"
#include "platform/linux/PortalShortcutsHook.h"
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"
#include "services/TextInsertionService.h"

#include <QDBusInterface>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <wayland-client.h>

#include "fake-input-client-protocol.h"

namespace {

const ClipboardFormats userCopy = {
    {"text/plain", "before"}, {"text/html", "<b>before</b>"}, {"application/x-quorla-binary", QByteArray("\x00\x01\xff\x00z", 5)}};

// The user copies as soon as the target has read the paste, before the clipboard goes back.
class CopyingAfterPaste : public KeySynthesizer
{
public:
    CopyingAfterPaste(std::shared_ptr<KeySynthesizer> keys, std::function<void()> copyOncePasted)
        : keys(std::move(keys))
    {
        QObject::connect(&poll, &QTimer::timeout, std::move(copyOncePasted));
    }
    void prepare(const std::function<void(bool)> &ready) override { keys->prepare(ready); }
    bool sendBackspace() override { return keys->sendBackspace(); }
    bool sendPasteShortcut(PasteShortcut shortcut) override { return keys->sendPasteShortcut(shortcut) && (poll.start(5), true); }
    bool isAnyModifierPressed() override { return false; }

    std::shared_ptr<KeySynthesizer> keys;
    QTimer poll;
};

// The compositors of scripts/desktop-session and the keys each pastes with: sway's virtual
// keyboard; KWin's fake input or KDE's remote desktop portal, on the KDE rig's own bus.
struct Compositor {
    const char *name, *displayVariable;
    bool portalKeys = false;
};
const Compositor sway{"sway", "QUORLA_TEST_WAYLAND_DISPLAY"}, kwin{"kwinFakeInput", "QUORLA_TEST_KDE_WAYLAND_DISPLAY"},
    kdePortal{"kdeRemoteDesktopPortal", "QUORLA_TEST_KDE_WAYLAND_DISPLAY", true};

void PrintTo(const Compositor &compositor, std::ostream *out)
{
    *out << compositor.name;
}

// Native Wayland windows on a headless compositor beside the X11 desktop; the accessibility
// bus is shared. CI always starts the compositors; elsewhere a missing one skips its tests.
class WaylandTest : public ::testing::Test
{
protected:
    explicit WaylandTest(const Compositor &compositor)
        : display(qEnvironmentVariable(compositor.displayVariable))
    {
        if (compositor.portalKeys)
            keys = std::make_shared<PortalKeySynthesizer>(directory.filePath("token"), nullptr, bus);
    }

    void SetUp() override
    {
        if (display.isEmpty() && qEnvironmentVariable("CI") != u"true")
            GTEST_SKIP() << "no headless compositor: run scripts/desktop-session with sway and kwin-wayland installed";
        ASSERT_FALSE(display.isEmpty()) << "CI needs the headless compositors";
        ASSERT_TRUE(QCoro::waitFor(accessibility->requestTrust())) << "the accessibility bus is off or unreachable";
        ASSERT_TRUE(clipboard && keys && user) << "the compositor offers data control and keys";
        environment.insert("WAYLAND_DISPLAY", display);
        environment.insert("QT_QPA_PLATFORM", "wayland");
        environment.insert("GDK_BACKEND", "wayland");
        environment.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        environment.remove("DISPLAY");
    }

    ApplicationHandlePtr launch(const QString &toolkit, const QString &initial)
    {
        if (toolkit == QLatin1String("gtk"))
            target.emplace(workspace, "/usr/bin/python3", QStringList{QUORLA_GTK_TARGET, output, initial}, environment);
        else
            target.emplace(workspace, QUORLA_TEXT_TARGET, QStringList{toolkit, output, initial}, environment);
        ApplicationHandlePtr application = target->application();
        return application && waitUntil([&] { return accessibility->focusedElement(application->processIdentifier()) != nullptr; })
                 ? application
                 : nullptr;
    }

    std::optional<QuorlaError> insert(TextInsertionService &service, const ApplicationHandlePtr &application, const QString &text)
    {
        std::optional<QuorlaError> error;
        // Built outside the coroutine: g++ 12 destroys a temporary in a co_await expression twice.
        QCoro::Task<void> inserting = service.insert(text, TextInsertionTarget{application}, true, true);
        QCoro::waitFor([&]() -> QCoro::Task<void> {
            try {
                co_await std::move(inserting);
            } catch (const QuorlaError &e) {
                error = e;
            }
        }());
        return error;
    }

    // What another client reads from the clipboard.
    QByteArray pasted(const QString &type)
    {
        QProcess paste;
        paste.setProcessEnvironment(environment);
        paste.start("wl-paste", {"--no-newline", "--type", type});
        if (!waitUntil([&] { return paste.state() == QProcess::NotRunning; }, 5000))
            paste.kill();
        return paste.readAllStandardOutput();
    }

    bool outputBecomes(const QString &expected)
    {
        return waitUntil([&] { return fileContents(output) == expected.toUtf8(); }, 5000);
    }

    const QString display;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QTemporaryDir directory;
    QString output = directory.filePath("field.txt");
    std::shared_ptr<AtSpiAccessibility> accessibility = std::make_shared<AtSpiAccessibility>();
    AtSpiWorkspace workspace{nullptr};
    std::shared_ptr<WaylandConnection> connection = WaylandConnection::open(display.toUtf8());
    std::shared_ptr<WaylandClipboard> clipboard = WaylandClipboard::create(connection);
    // KWin grants its fake input to this program by the desktop entry scripts/kde-session writes.
    std::shared_ptr<KeySynthesizer> keys = connection && connection->offers("org_kde_kwin_fake_input")
                                             ? std::shared_ptr<KeySynthesizer>(KWinFakeInputKeySynthesizer::create(connection))
                                             : VirtualKeyboardKeySynthesizer::create(connection);
    QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("QUORLA_TEST_KDE_BUS"), "kde");
    // Another client's clipboard: the user copying.
    std::shared_ptr<WaylandClipboard> user = WaylandClipboard::create(WaylandConnection::open(display.toUtf8()));
    // A longer wait before the clipboard goes back: a loaded CI machine may read a paste late.
    TextInsertionTimings timings{.clipboardRestoreDelay = std::chrono::milliseconds{600}};
    std::optional<TextTarget> target;
};

class WaylandInsertionTest : public WaylandTest, public ::testing::WithParamInterface<Compositor>
{
protected:
    WaylandInsertionTest()
        : WaylandTest(GetParam())
    {
    }
};

// Qt Quick's field takes no text through AT-SPI and is pasted into; the others are typed into.
TEST_P(WaylandInsertionTest, theFocusedApplicationIsFoundAndTypedIntoInEachToolkit)
{
    TextInsertionService service(accessibility, keys, clipboard, timings);
    for (const QString toolkit : {"widgets", "quick", "gtk"}) {
        SCOPED_TRACE(toolkit.toStdString());
        const ApplicationHandlePtr application = launch(toolkit, "hello ");
        ASSERT_TRUE(application);
        EXPECT_EQ(insert(service, application, "wörld"), std::nullopt);
        EXPECT_TRUE(outputBecomes("hellowörld")) << fileContents(output).toStdString();
    }
}

TEST_P(WaylandInsertionTest, pastesAndPutsEveryFormatBackUnlessTheUserCopiedMeanwhile)
{
    // No field is offered through accessibility: the paste route.
    auto noField = std::make_shared<FakeAccessibility>();
    const struct {
        const char *toolkit;
        bool copyMeanwhile;
    } cases[] = {{"widgets", false}, {"gtk", false}, {"gtk", true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.toolkit) + (c.copyMeanwhile ? " copied meanwhile" : ""));
        ASSERT_TRUE(user->write(Clipboard::Selection::clipboard, userCopy));
        bool copied = false;
        auto copying = std::make_shared<CopyingAfterPaste>(keys, [&] {
            if (c.copyMeanwhile && !copied && fileContents(output).contains("wörld"))
                copied = user->writeText(Clipboard::Selection::clipboard, "copied meanwhile", false);
        });
        TextInsertionService service(noField, copying, clipboard, timings);
        const ApplicationHandlePtr application = launch(c.toolkit, "hello ");
        ASSERT_TRUE(application);
        EXPECT_EQ(insert(service, application, "wörld"), std::nullopt);
        EXPECT_TRUE(outputBecomes("hello wörld")) << fileContents(output).toStdString();
        if (c.copyMeanwhile) {
            EXPECT_EQ(pasted("text/plain"), "copied meanwhile");
            continue;
        }
        for (const auto &[type, bytes] : userCopy)
            EXPECT_EQ(pasted(type), bytes) << type.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Compositors, WaylandInsertionTest, ::testing::Values(sway, kwin, kdePortal),
                         [](const auto &info) { return std::string(info.param.name); });

class KdeTest : public WaylandTest
{
protected:
    KdeTest()
        : WaylandTest(kwin)
    {
    }

    // Keys as a hand presses them, through KWin's fake input: upper case presses, lower case
    // releases (c Ctrl, a Alt, d D, s Space); '.' holds what is down for a moment.
    void press(const QString &steps)
    {
        auto *input = static_cast<org_kde_kwin_fake_input *>(connection->bind(&org_kde_kwin_fake_input_interface, 4));
        org_kde_kwin_fake_input_authenticate(input, "tests", "keys");
        const QHash<QChar, int> codes{{'c', KEY_LEFTCTRL}, {'a', KEY_LEFTALT}, {'d', KEY_D}, {'s', KEY_SPACE}};
        for (const QChar step : steps) {
            if (step == '.')
                QTest::qWait(300);
            else
                org_kde_kwin_fake_input_keyboard_key(input, codes[step.toLower()], step.isUpper() ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
            connection->flush();
        }
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(input));
    }
};

// KDE binds both chords as the session opens and tells press and release; a held chord
// repeats its press.
TEST_F(KdeTest, theDesktopsShortcutsCarryHoldAndToggle)
{
    PortalShortcutsHook hook(nullptr, bus);
    QStringList events;
    KeyboardHook::Events handlers;
    handlers.triggerChanged = [&](bool down) { events << (down ? "down" : "up"); };
    handlers.toggleRequested = [&] { events << "toggle"; };
    hook.install(handlers);
    ASSERT_TRUE(waitUntil([&] { return hook.isSettled(); }));
    const struct {
        const char *keys;
        QStringList events;
    } rows[] = {{"CAD.dac", {"down", "up"}}, {"CAD.cad", {"down", "up"}}, {"CAS.sacCAS.sac", {"toggle", "toggle"}}};
    for (const auto &row : rows) {
        events.clear();
        press(row.keys);
        (void)waitUntil([&] { return events.size() >= row.events.size(); }, 3000);
        EXPECT_EQ(events, row.events) << row.keys;
    }
}

// KWin's layout service (scripts/kde-session gives it "us,de(nodeadkeys)"): the active
// layout named from its long name, and every switch a change notice.
TEST_F(KdeTest, theActiveLayoutFollowsKwin)
{
    KdeInputSourceProvider provider(bus);
    int changes = 0;
    provider.startObservingChanges([&] { ++changes; });
    ASSERT_TRUE(waitUntil([&] { return std::exchange(changes, 0) > 0; })) << "the first layout is read";
    QDBusInterface layouts("org.kde.keyboard", "/Layouts", "org.kde.KeyboardLayouts", bus);
    const std::tuple<uint, QString, QString> steps[] = {{1, "xkb:de:nodeadkeys", "de"}, {0, "xkb:us", "en"}};
    for (const auto &[index, identifier, language] : steps) {
        layouts.call("setLayout", index);
        (void)waitUntil([&, &identifier = identifier] { return provider.currentInputSource().value_or(InputSourceInfo{}).identifier == identifier; }, 5000);
        const InputSourceInfo source = provider.currentInputSource().value_or(InputSourceInfo{});
        EXPECT_EQ(source.identifier, identifier);
        EXPECT_TRUE(source.languages.contains(language)) << source.languages.join(u' ').toStdString();
    }
    EXPECT_EQ(changes, 2);
}

// A Plasma session: KDE's routes throughout.
TEST_F(KdeTest, theProbePicksKdesBackends)
{
    qputenv("WAYLAND_DISPLAY", display.toUtf8());
    const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
    const DesktopSession session = QCoro::waitFor(DesktopSessionProbe::withPortals(DesktopSessionProbe::displayServers(), bus));
    using B = SessionBackends;
    EXPECT_EQ(chosenBackends(session), (B{B::Trigger::globalShortcutsPortal, B::Keys::kdeFakeInput, B::Clipboard::dataControl, B::Workspace::accessibility, B::Layout::kde}));
    EXPECT_GT(session.remoteDesktopPortal, 0);
}

} // namespace
