#pragma once

#include "platform/DesktopSession.h"

#include <QCoro/QCoroTask>
#include <QDBusConnection>

// Finds out what the running session offers by asking: the Wayland compositor for its
// globals, the X server for a connection, sway for its IPC socket, the desktop portals for
// their interface versions.
namespace DesktopSessionProbe {

// The display servers only: local sockets, each given a short time limit.
[[nodiscard]] DesktopSession displayServers();
// `session` with the portal versions read over `bus`, waiting without blocking.
[[nodiscard]] QCoro::Task<DesktopSession> withPortals(DesktopSession session, QDBusConnection bus);

} // namespace DesktopSessionProbe
