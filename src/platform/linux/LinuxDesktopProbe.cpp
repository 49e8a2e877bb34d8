#include "LinuxDesktopProbe.h"

#include "models/TriggerKey.h"
#include "platform/linux/DesktopSessionProbe.h"
#include "platform/linux/X11KeyboardHook.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QCoro/QCoroTask>
#include <QScopeGuard>

#include <pulse/pulseaudio.h>

#include <chrono>

namespace {

constexpr int busTimeoutMs = 2000;
constexpr auto audioServerLimit = std::chrono::seconds(3);

using Access = DesktopProbe::TriggerAccess;

Access accessFor(X11KeyboardConnection::OpenResult result)
{
    switch (result) {
    case X11KeyboardConnection::OpenResult::ok:
        return Access::watchable;
    case X11KeyboardConnection::OpenResult::noDisplay:
        return Access::noDisplay;
    case X11KeyboardConnection::OpenResult::noXInput2:
        return Access::noXInput2;
    case X11KeyboardConnection::OpenResult::noGrabConnection:
        return Access::noDisplay;
    case X11KeyboardConnection::OpenResult::noTriggerKey:
        break;
    }
    return Access::noTriggerKey;
}

// One conversation with the PulseAudio server on a private main loop: connect, ask for
// the server and its default source, disconnect. Never starts a server.
class PulseConversation
{
public:
    PulseConversation()
        : m_loop(pa_mainloop_new())
        , m_context(pa_context_new(pa_mainloop_get_api(m_loop), "Quorla doctor"))
    {
    }
    PulseConversation(const PulseConversation &) = delete;
    PulseConversation &operator=(const PulseConversation &) = delete;
    ~PulseConversation()
    {
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        pa_mainloop_free(m_loop);
    }

    DesktopProbe::AudioServer ask()
    {
        DesktopProbe::AudioServer answer;
        if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            return answer;
        if (!runUntil([this] {
                const pa_context_state_t state = pa_context_get_state(m_context);
                return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
            })
            || pa_context_get_state(m_context) != PA_CONTEXT_READY)
            return answer;
        answer.reachable = true;

        const auto serverInfo = [](pa_context *, const pa_server_info *info, void *data) {
            auto *self = static_cast<PulseConversation *>(data);
            self->m_serverName = QString::fromUtf8(info->server_name) + QStringLiteral(" ")
                               + QString::fromUtf8(info->server_version);
            self->m_defaultSource = info->default_source_name;
            self->m_done = true;
        };
        if (!await(pa_context_get_server_info(m_context, serverInfo, this)))
            return answer;
        answer.name = m_serverName;
        if (m_defaultSource.isEmpty())
            return answer;

        const auto sourceInfo = [](pa_context *, const pa_source_info *info, int eol, void *data) {
            auto *self = static_cast<PulseConversation *>(data);
            if (info && self->m_sourceDescription.isEmpty())
                self->m_sourceDescription = QString::fromUtf8(info->description ? info->description : info->name);
            if (eol)
                self->m_done = true;
        };
        if (await(pa_context_get_source_info_by_name(m_context, m_defaultSource.constData(), sourceInfo, this)))
            answer.defaultInput = m_sourceDescription;
        return answer;
    }

private:
    template <typename Done>
    bool runUntil(Done done)
    {
        const auto deadline = std::chrono::steady_clock::now() + audioServerLimit;
        while (!done()) {
            if (std::chrono::steady_clock::now() > deadline || pa_mainloop_prepare(m_loop, 50 * 1000) < 0
                || pa_mainloop_poll(m_loop) < 0 || pa_mainloop_dispatch(m_loop) < 0)
                return false;
        }
        return true;
    }

    bool await(pa_operation *operation)
    {
        if (!operation)
            return false;
        m_done = false;
        const bool finished = runUntil([this] { return m_done; });
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
        return finished;
    }

    pa_mainloop *m_loop;
    pa_context *m_context;
    bool m_done = false;
    QString m_serverName;
    QByteArray m_defaultSource;
    QString m_sourceDescription;
};

} // namespace

DesktopProbe::Session LinuxDesktopProbe::session()
{
    Session session;
    session.display = qEnvironmentVariable("DISPLAY");
    // A worker thread: its own bus connection, and a wait of its own for the portals.
    const QString name = QStringLiteral("quorla-doctor-session");
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    const auto disconnect = qScopeGuard([&name] { QDBusConnection::disconnectFromBus(name); });
    session.offers = QCoro::waitFor(DesktopSessionProbe::withPortals(DesktopSessionProbe::displayServers(), bus));
    if (session.offers.wayland)
        session.type = SessionType::wayland;
    else if (session.offers.x11)
        session.type = SessionType::x11;
    if (!session.offers.x11)
        session.display.clear();
    return session;
}

DesktopProbe::TriggerAccess LinuxDesktopProbe::triggerAccess(const TriggerKey &key)
{
    return accessFor(X11KeyboardHook::probe(key).trigger);
}

DesktopProbe::AccessibilityBus LinuxDesktopProbe::accessibilityBus()
{
    // Its own connection: the shared one belongs to the main thread's event loop.
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("quorla-doctor"));
    const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus(QStringLiteral("quorla-doctor")); });
    AccessibilityBus answer;
    if (!bus.isConnected())
        return answer;
    const QString service = QStringLiteral("org.a11y.Bus");
    const QString path = QStringLiteral("/org/a11y/bus");
    const QDBusReply<QString> address =
        bus.call(QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetAddress")), QDBus::Block,
                 busTimeoutMs);
    answer.reachable = address.isValid() && !address.value().isEmpty();
    QDBusMessage get =
        QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << QStringLiteral("org.a11y.Status") << QStringLiteral("IsEnabled");
    const QDBusReply<QDBusVariant> enabled = bus.call(get, QDBus::Block, busTimeoutMs);
    answer.enabled = enabled.isValid() && enabled.value().variant().toBool();
    return answer;
}

bool LinuxDesktopProbe::canSynthesizeKeys()
{
    return X11KeyboardConnection::probe({}).xtest;
}

DesktopProbe::AudioServer LinuxDesktopProbe::audioServer()
{
    return PulseConversation().ask();
}
