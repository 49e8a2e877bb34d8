// The Wayland protocols no compositor here offers, against a compositor of the test's own.
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"

#include "FakeCompositor.h"

#include <QCoro/QCoroTask>
#include <gtest/gtest.h>

namespace {

TEST(WaylandClipboard, copiesAndReadsEveryFormatThroughExtDataControl)
{
    FakeCompositor compositor;
    const auto mine = WaylandClipboard::create(compositor.connect());
    const auto theirs = WaylandClipboard::create(compositor.connect());
    ASSERT_TRUE(mine && theirs);
    const ClipboardFormats copied = {{"text/html", "<b>x</b>"}, {"application/x-binary", QByteArray("\0\1\xff", 3)}};
    ASSERT_TRUE(theirs->write(Clipboard::Selection::clipboard, copied));
    EXPECT_EQ(QCoro::waitFor(mine->read(Clipboard::Selection::clipboard)), copied);

    ASSERT_TRUE(mine->writeText(Clipboard::Selection::clipboard, "wörld", true));
    const ClipboardFormats seen = QCoro::waitFor(theirs->read(Clipboard::Selection::clipboard));
    EXPECT_TRUE(seen.contains({"text/plain;charset=utf-8", "wörld"}) && seen.contains({"x-kde-passwordManagerHint", "secret"}));
    EXPECT_TRUE(mine->holdsText(Clipboard::Selection::clipboard, "wörld"));
    ASSERT_TRUE(theirs->write(Clipboard::Selection::clipboard, copied));
    QCoro::waitFor(mine->read(Clipboard::Selection::clipboard)); // the cancellation has arrived
    EXPECT_FALSE(mine->holdsText(Clipboard::Selection::clipboard, "wörld"));
}

TEST(KWinFakeInputKeySynthesizer, sendsEachShortcutAsEvdevKeysOnceAuthenticated)
{
    FakeCompositor compositor;
    const auto connection = compositor.connect();
    const auto keys = KWinFakeInputKeySynthesizer::create(connection);
    ASSERT_TRUE(keys);
    using Shortcut = KeySynthesizer::PasteShortcut;
    for (const Shortcut shortcut : {Shortcut::controlV, Shortcut::controlShiftV, Shortcut::shiftInsert})
        EXPECT_TRUE(keys->sendPasteShortcut(shortcut));
    EXPECT_TRUE(keys->sendBackspace());
    ASSERT_TRUE(QCoro::waitFor(connection->sync()));
    EXPECT_EQ(compositor.fakeInput(), QStringList({"authenticated",                          //
                                                   "+29", "+47", "-47", "-29",               // Ctrl+V
                                                   "+29", "+42", "+47", "-47", "-42", "-29", // Ctrl+Shift+V
                                                   "+42", "+110", "-110", "-42",             // Shift+Insert
                                                   "+14", "-14"}));                          // Backspace
}

} // namespace
