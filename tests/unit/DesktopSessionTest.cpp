#include "platform/DesktopSession.h"

#include <gtest/gtest.h>

namespace {

using B = SessionBackends;

// The first route a session offers wins, per seam; Xwayland serves only when nothing
// native does, and a set DISPLAY counts only when an X server answered.
TEST(DesktopSessionTest, chosenBackendsTakeTheFirstRouteTheSessionOffers)
{
    const DesktopSession sway{.x11 = true, .wayland = true, .swayIpc = true, .wlrDataControl = true, .virtualKeyboard = true};
    const DesktopSession kde{.wayland = true, .wlrDataControl = true, .kdeFakeInput = true, .globalShortcutsPortal = 1, .remoteDesktopPortal = 2};
    const DesktopSession gnome{.x11 = true, .wayland = true, .remoteDesktopPortal = 2};
    const std::tuple<const char *, DesktopSession, SessionBackends> cases[] = {
        {"X11", {.x11 = true}, {B::Trigger::x11, B::Keys::x11, B::Clipboard::qt, B::Workspace::x11, B::Layout::xkb}},
        {"nothing", {}, {B::Trigger::commandOnly, B::Keys::none, B::Clipboard::none, B::Workspace::accessibility}},
        {"sway", sway, {B::Trigger::sway, B::Keys::virtualKeyboard, B::Clipboard::dataControl, B::Workspace::accessibility, B::Layout::sway}},
        {"KDE", kde, {B::Trigger::globalShortcutsPortal, B::Keys::kdeFakeInput, B::Clipboard::dataControl, B::Workspace::accessibility, B::Layout::kde}},
        {"GNOME 43", gnome, {B::Trigger::xwaylandOnly, B::Keys::remoteDesktopPortal, B::Clipboard::none, B::Workspace::accessibility, B::Layout::kde}},
        {"bare compositor", {.wayland = true, .extDataControl = true}, {B::Trigger::commandOnly, B::Keys::none, B::Clipboard::dataControl, B::Workspace::accessibility, B::Layout::kde}},
        {"Xwayland only", {.x11 = true, .wayland = true}, {B::Trigger::xwaylandOnly, B::Keys::xwaylandOnly, B::Clipboard::none, B::Workspace::accessibility, B::Layout::kde}},
    };
    for (const auto &[name, session, expected] : cases)
        EXPECT_EQ(chosenBackends(session), expected) << name;
}

} // namespace
