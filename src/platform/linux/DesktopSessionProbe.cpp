#include "DesktopSessionProbe.h"

#include "SwayIpcConnection.h"

#include <QCoro/QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QLoggingCategory>

#include <poll.h>
#include <wayland-client.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstring>

Q_LOGGING_CATEGORY(lcSessionProbe, "quorla.session")

namespace {

constexpr int compositorLimitMs = 1000;
constexpr int portalLimitMs = 1000;

void noteGlobal(void *data, wl_registry *, uint32_t, const char *interface, uint32_t)
{
    auto &session = *static_cast<DesktopSession *>(data);
    const auto is = [interface](const char *name) { return std::strcmp(interface, name) == 0; };
    session.wlrDataControl |= is("zwlr_data_control_manager_v1");
    session.extDataControl |= is("ext_data_control_manager_v1");
    session.virtualKeyboard |= is("zwp_virtual_keyboard_manager_v1");
    session.kdeFakeInput |= is("org_kde_kwin_fake_input");
}

void forgetGlobal(void *, wl_registry *, uint32_t)
{
}

const wl_registry_listener registryListener{noteGlobal, forgetGlobal};

void noteDone(void *data, wl_callback *, uint32_t)
{
    *static_cast<bool *>(data) = true;
}

const wl_callback_listener doneListener{noteDone};

// One round trip for the registry, given up after the limit: a hung compositor must not
// hold Quorla's start.
void readGlobals(wl_display *display, DesktopSession &session)
{
    wl_registry *registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &registryListener, &session);
    bool done = false;
    wl_callback *sync = wl_display_sync(display);
    wl_callback_add_listener(sync, &doneListener, &done);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(compositorLimitMs);
    while (!done) {
        while (wl_display_prepare_read(display) != 0)
            wl_display_dispatch_pending(display);
        wl_display_flush(display);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd fd{wl_display_get_fd(display), POLLIN, 0};
        if (left.count() <= 0 || poll(&fd, 1, int(left.count())) <= 0) {
            wl_display_cancel_read(display);
            qCWarning(lcSessionProbe) << "the Wayland compositor did not list its globals in time";
            break;
        }
        if (wl_display_read_events(display) < 0 || wl_display_dispatch_pending(display) < 0)
            break;
    }
    wl_callback_destroy(sync);
    wl_registry_destroy(registry);
}

bool x11Answers()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return false;
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const bool connected = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return connected;
}

QCoro::Task<int> portalVersion(QDBusConnection bus, QString interface)
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << interface << QStringLiteral("version");
    const QDBusPendingReply<QDBusVariant> reply = co_await bus.asyncCall(get, portalLimitMs);
    co_return reply.isValid() ? reply.value().variant().toInt() : 0;
}

} // namespace

DesktopSession DesktopSessionProbe::displayServers()
{
    DesktopSession session;
    // Without WAYLAND_DISPLAY libwayland tries the default socket, which a session started
    // from a service may still have.
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || qEnvironmentVariable("XDG_SESSION_TYPE").compare(QLatin1String("wayland"), Qt::CaseInsensitive) == 0) {
        if (wl_display *display = wl_display_connect(nullptr)) {
            session.wayland = true;
            readGlobals(display, session);
            wl_display_disconnect(display);
        }
    }
    session.x11 = x11Answers();
    session.swayIpc = session.wayland && !SwayIpcConnection::sessionSocketPath().isEmpty();
    return session;
}

QCoro::Task<DesktopSession> DesktopSessionProbe::withPortals(DesktopSession session, QDBusConnection bus)
{
    if (!session.wayland || !bus.isConnected())
        co_return session;
    session.globalShortcutsPortal = co_await portalVersion(bus, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"));
    session.remoteDesktopPortal = co_await portalVersion(bus, QStringLiteral("org.freedesktop.portal.RemoteDesktop"));
    co_return session;
}
