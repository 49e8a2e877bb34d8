// ext-data-control-v1 against a compositor of the test's own: no compositor here offers it.
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include "FakeDataControlCompositor.h"

#include <QCoro/QCoroTask>
#include <gtest/gtest.h>

namespace {

TEST(WaylandClipboard, copiesAndReadsEveryFormatThroughExtDataControl)
{
    FakeDataControlCompositor compositor;
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

} // namespace
