#include "WaylandConnection.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <QCoro/QCoroSignal>

#include <poll.h>
#include <wayland-client.h>

Q_LOGGING_CATEGORY(lcWayland, "quorla.wayland")

namespace {

void callbackDone(void *data, wl_callback *callback, uint32_t)
{
    Q_EMIT static_cast<WaylandConnection *>(data)->callbackDone(callback);
}

const wl_callback_listener callbackListener = {.done = callbackDone};

} // namespace

std::shared_ptr<WaylandConnection> WaylandConnection::open(const QByteArray &name)
{
    wl_display *display = wl_display_connect(name.isEmpty() ? nullptr : name.constData());
    if (!display) {
        qCInfo(lcWayland) << "no compositor answers on" << (name.isEmpty() ? qgetenv("WAYLAND_DISPLAY") : name);
        return nullptr;
    }
    std::shared_ptr<WaylandConnection> connection(new WaylandConnection(display));
    // Globals, then the seat's answers to what was bound while the globals came in.
    if (!connection->roundtripWithin(std::chrono::milliseconds{1000})
        || !connection->roundtripWithin(std::chrono::milliseconds{1000})) {
        qCWarning(lcWayland) << "the compositor did not answer at start-up";
        return nullptr;
    }
    connection->m_notifier = new QSocketNotifier(wl_display_get_fd(display), QSocketNotifier::Read, connection.get());
    QObject::connect(connection->m_notifier, &QSocketNotifier::activated, connection.get(), &WaylandConnection::dispatch);
    return connection;
}

WaylandConnection::WaylandConnection(wl_display *display)
    : m_display(display)
{
    static const wl_registry_listener listener = {.global = &WaylandConnection::global,
                                                  .global_remove = &WaylandConnection::globalRemove};
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &listener, this);
}

WaylandConnection::~WaylandConnection()
{
    delete m_notifier;
    if (m_seat)
        wl_seat_destroy(m_seat);
    wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void WaylandConnection::global(void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t version)
{
    auto *self = static_cast<WaylandConnection *>(data);
    self->m_globals.append({name, QString::fromLatin1(interface), version});
    if (!self->m_seat && qstrcmp(interface, wl_seat_interface.name) == 0)
        self->m_seat = static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
}

void WaylandConnection::globalRemove(void *data, wl_registry *, uint32_t name)
{
    auto *self = static_cast<WaylandConnection *>(data);
    self->m_globals.removeIf([name](const Global &g) { return g.name == name; });
}

bool WaylandConnection::offers(const char *interface) const
{
    return std::any_of(m_globals.begin(), m_globals.end(),
                       [interface](const Global &g) { return g.interface == QLatin1String(interface); });
}

void *WaylandConnection::bind(const wl_interface *interface, uint32_t version) const
{
    for (const Global &g : m_globals) {
        if (g.interface == QLatin1String(interface->name))
            return wl_registry_bind(m_registry, g.name, interface, std::min(version, g.version));
    }
    return nullptr;
}

bool WaylandConnection::isBroken() const
{
    return wl_display_get_error(m_display) != 0;
}

bool WaylandConnection::flush()
{
    // A full socket (EAGAIN) sends the rest with the next flush; only an error is fatal.
    return wl_display_flush(m_display) >= 0 || errno == EAGAIN ? !isBroken() : false;
}

// Start-up only, before the notifier exists: a bounded wait on a local socket.
bool WaylandConnection::roundtripWithin(std::chrono::milliseconds limit)
{
    bool done = false;
    wl_callback *callback = wl_display_sync(m_display);
    static const wl_callback_listener listener = {
        .done = [](void *data, wl_callback *, uint32_t) { *static_cast<bool *>(data) = true; }};
    wl_callback_add_listener(callback, &listener, &done);
    const QDeadlineTimer deadline(limit);
    while (!done && !isBroken()) {
        while (wl_display_prepare_read(m_display) != 0)
            wl_display_dispatch_pending(m_display);
        wl_display_flush(m_display);
        pollfd fd{wl_display_get_fd(m_display), POLLIN, 0};
        if (poll(&fd, 1, int(deadline.remainingTime())) <= 0) {
            wl_display_cancel_read(m_display);
            break;
        }
        wl_display_read_events(m_display);
        wl_display_dispatch_pending(m_display);
    }
    wl_callback_destroy(callback);
    return done;
}

void WaylandConnection::dispatch()
{
    if (wl_display_dispatch(m_display) < 0) {
        qCWarning(lcWayland) << "the compositor closed the connection:" << wl_display_get_error(m_display);
        m_notifier->setEnabled(false);
    }
    flush();
}

QCoro::Task<bool> WaylandConnection::sync(std::chrono::milliseconds limit)
{
    if (isBroken())
        co_return false;
    wl_callback *callback = wl_display_sync(m_display);
    wl_callback_add_listener(callback, &callbackListener, this);
    flush();
    const QDeadlineTimer deadline(limit);
    bool answered = false;
    while (!answered && !deadline.hasExpired() && !isBroken()) {
        const auto done = co_await qCoro(this, &WaylandConnection::callbackDone,
                                         std::chrono::milliseconds{std::max<qint64>(1, deadline.remainingTime())});
        answered = done && *done == callback;
    }
    wl_callback_destroy(callback);
    co_return answered;
}
