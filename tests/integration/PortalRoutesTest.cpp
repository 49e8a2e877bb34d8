#include "FakeKeySynthesizer.h"
#include "FakeKeyboardHook.h"
#include "FakePortal.h"
#include "platform/linux/PortalKeySynthesizer.h"
#include "platform/linux/PortalShortcutsHook.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace {

// Steps: H/h the hold shortcut activated/deactivated, G/g the toggle's, R the user
// rebinding both, C the desktop closing the session. Each row ends on a step that gives
// an event; signals arrive in order, so by then the repeats before it have been seen.
TEST(PortalShortcutsHook, turnsTheDesktopsShortcutsIntoTriggerAndToggleEvents)
{
    const QStringList kde{"CreateSession", "ListShortcuts"};
    const struct {
        const char *name;
        bool bindsAtCreate;
        QString steps;
        QStringList events, calls;
    } cases[] = {
        {"hold, repeats ignored, rebound", true, "HHRHh", {"Ctrl+Alt+H Ctrl+Alt+T", "down", "Meta+H Meta+T", "up"}, kde},
        {"toggle twice, repeats ignored", false, "GGgG", {"Ctrl+Alt+H Ctrl+Alt+T", "toggle", "toggle"}, kde + QStringList{"BindShortcuts"}},
        {"session closed while held", true, "HC", {"Ctrl+Alt+H Ctrl+Alt+T", "down", "up"}, kde},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakePortal portal;
        portal.bindsAtCreate = c.bindsAtCreate;
        PortalShortcutsHook hook(nullptr, QDBusConnection::sessionBus(), portal.service());
        QStringList events;
        KeyboardHook::Events handlers;
        handlers.triggerChanged = [&](bool down) { events << (down ? "down" : "up"); };
        handlers.toggleRequested = [&] { events << "toggle"; };
        handlers.namesChanged = [&] { events << hook.triggerDisplayName() + ' ' + hook.toggleDisplayName(); };
        hook.install(handlers);
        // Bound once the desktop's name for the hold shortcut is known.
        ASSERT_TRUE(QTest::qWaitFor([&] { return hook.triggerDisplayName() == "Ctrl+Alt+H"; }));
        EXPECT_EQ(portal.calls, c.calls);
        EXPECT_EQ(portal.options["CreateSession"]["session_handle_token"].toString(), "quorla");
        for (const QChar step : c.steps)
            portal.emitSignal(step == 'C' ? "Closed" : step == 'R'  ? "ShortcutsChanged"
                                                   : step.isUpper() ? "Activated"
                                                                    : "Deactivated",
                              step.toUpper() == 'H' ? PortalShortcutsHook::holdId : PortalShortcutsHook::toggleId);
        ASSERT_TRUE(QTest::qWaitFor([&] { return events.size() >= c.events.size(); }));
        EXPECT_EQ(events, c.events);
        EXPECT_EQ(hook.isInstalled(), !c.steps.endsWith('C'));
    }

    // A desktop without them: the fallback watches the trigger key instead, and says so.
    FakePortal portal;
    portal.globalShortcuts = false;
    auto fallback = std::make_shared<FakeKeyboardHook>();
    fallback->installNotice = "Only X11 windows.";
    PortalShortcutsHook hook(fallback, QDBusConnection::sessionBus(), portal.service());
    std::optional<QString> notice;
    KeyboardHook::Events handlers;
    handlers.routeChanged = [&](std::exception_ptr, std::optional<QString> told) { notice = told; };
    hook.install(handlers);
    ASSERT_TRUE(QTest::qWaitFor([&] { return notice.has_value(); }));
    EXPECT_EQ(notice, "Only X11 windows.");
    EXPECT_TRUE(hook.isInstalled());
    EXPECT_EQ(hook.triggerDisplayName(), "Fn");
}

// The session opens at the first paste and serves the next; refused, the keys go the
// fallback's way and the next paste asks again; closed by the desktop, the next paste opens a new one.
TEST(PortalKeySynthesizer, opensOneKeyboardSessionAtTheFirstPaste)
{
    // Keysyms, which the desktop finds in the layout in use: V is not V's key on every layout.
    const QList<QPair<int, uint>> keys{{XKB_KEY_Control_L, 1}, {XKB_KEY_Shift_L, 1}, {XKB_KEY_v, 1}, {XKB_KEY_v, 0}, {XKB_KEY_Shift_L, 0}, {XKB_KEY_Control_L, 0}, {XKB_KEY_BackSpace, 1}, {XKB_KEY_BackSpace, 0}};
    const QStringList opening{"Get", "CreateSession", "SelectDevices", "Start"};
    const struct {
        const char *name;
        uint version, consent;
        bool closed;
        QStringList calls;
        QByteArray tokenAfter;
    } cases[] = {
        {"consent kept between runs (version 2)", 2, 0, false, opening, "granted-once"},
        {"refused", 2, 1, false, opening + QStringList{"Close"} + opening, "from-last-run"},
        {"closed by the desktop (version 1)", 1, 0, true, opening + opening, "from-last-run"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakePortal portal;
        portal.version = c.version;
        portal.consent = c.consent;
        const QTemporaryDir dir;
        QFile token(dir.filePath("token"));
        ASSERT_TRUE(token.open(QIODevice::WriteOnly) && token.write("from-last-run") > 0);
        token.close();
        const auto fallback = std::make_shared<FakeKeySynthesizer>();
        PortalKeySynthesizer synthesizer(token.fileName(), fallback, QDBusConnection::sessionBus(), portal.service());
        const auto prepared = [&] {
            std::optional<bool> ready;
            synthesizer.prepare([&](bool answer) { ready = answer; });
            EXPECT_TRUE(QTest::qWaitFor([&] { return ready.has_value(); }));
            return ready;
        };
        EXPECT_TRUE(prepared());
        if (c.closed) {
            portal.emitSignal("Closed");
            // Ready at once while the session lasts; once it is closed, a new one opens.
            ASSERT_TRUE(QTest::qWaitFor([&] {
                synthesizer.prepare([](bool) {});
                return portal.calls.count("CreateSession") == 2;
            }));
        }
        EXPECT_TRUE(prepared());
        const bool sent = synthesizer.sendPasteShortcut(KeySynthesizer::PasteShortcut::controlShiftV)
                       && synthesizer.sendBackspace();
        EXPECT_TRUE(sent);
        ASSERT_TRUE(QTest::qWaitFor([&] { return portal.keys.size() >= (c.consent == 0 ? keys.size() : 0); }));
        EXPECT_EQ(portal.keys, c.consent == 0 ? keys : decltype(keys){});
        EXPECT_EQ(fallback->sent.size(), c.consent == 0 ? 0 : 2);
        EXPECT_EQ(portal.calls.mid(0, c.calls.size()), c.calls);
        EXPECT_EQ(portal.options["SelectDevices"]["types"].toUInt(), 1u);
        EXPECT_EQ(portal.options["SelectDevices"]["restore_token"].toString(), c.version >= 2 ? "from-last-run" : "");
        ASSERT_TRUE(token.open(QIODevice::ReadOnly));
        EXPECT_EQ(token.readAll(), c.tokenAfter);
    }
}

} // namespace
