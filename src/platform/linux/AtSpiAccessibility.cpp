#include "AtSpiAccessibility.h"

#include "AtSpiAccessibleElement.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QCoro/QCoroDBusPendingCall>
#include <QDBusVariant>
#include <QLoggingCategory>

#include <atspi/atspi.h>

#include <vector>

Q_LOGGING_CATEGORY(lcAtSpi, "quorla.atspi")

namespace {

const QString busService = QStringLiteral("org.a11y.Bus");
const QString busPath = QStringLiteral("/org/a11y/bus");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString statusInterface = QStringLiteral("org.a11y.Status");
constexpr int busTimeoutMs = 2000;

// A focused field sits a few levels under its window; the bounds keep a huge or
// misbehaving tree from stalling the insertion.
constexpr int searchNodeLimit = 4000;
constexpr int searchDepthLimit = 48;

bool initialized()
{
    static const bool ok = [] {
        const int status = atspi_init(); // 0: connected now, 1: already connected
        if (status > 1)
            qCWarning(lcAtSpi) << "the accessibility bus could not be reached:" << status;
        return status <= 1;
    }();
    return ok;
}

struct Node {
    AtspiAccessible *accessible;
    int depth;
};

bool hasState(AtspiAccessible *accessible, AtspiStateType state, bool *showing)
{
    AtspiStateSet *states = atspi_accessible_get_state_set(accessible);
    if (!states)
        return false;
    const bool has = atspi_state_set_contains(states, state);
    *showing = atspi_state_set_contains(states, ATSPI_STATE_SHOWING);
    g_object_unref(states);
    return has;
}

AtspiAccessible *applicationWithProcess(qint64 processIdentifier)
{
    AtspiAccessible *desktop = atspi_get_desktop(0);
    if (!desktop)
        return nullptr;
    AtspiAccessible *found = nullptr;
    GError *error = nullptr;
    const gint count = atspi_accessible_get_child_count(desktop, &error);
    g_clear_error(&error);
    for (gint i = 0; i < count && !found; ++i) {
        AtspiAccessible *application = atspi_accessible_get_child_at_index(desktop, i, &error);
        g_clear_error(&error);
        if (!application)
            continue;
        const guint pid = atspi_accessible_get_process_id(application, &error);
        if (!error && pid == processIdentifier)
            found = application;
        else
            g_object_unref(application);
        g_clear_error(&error);
    }
    g_object_unref(desktop);
    return found;
}

// Depth first, skipping what is not on screen: focus lives in the visible window.
AtspiAccessible *focusedDescendant(AtspiAccessible *application)
{
    std::vector<Node> stack{{static_cast<AtspiAccessible *>(g_object_ref(application)), 0}};
    AtspiAccessible *focused = nullptr;
    int visited = 0;
    while (!stack.empty()) {
        const Node node = stack.back();
        stack.pop_back();
        if (focused || ++visited > searchNodeLimit) {
            g_object_unref(node.accessible);
            continue;
        }
        bool showing = false;
        if (node.depth > 0 && hasState(node.accessible, ATSPI_STATE_FOCUSED, &showing)) {
            focused = node.accessible;
            continue;
        }
        if ((node.depth > 0 && !showing) || node.depth >= searchDepthLimit) {
            g_object_unref(node.accessible);
            continue;
        }
        GError *error = nullptr;
        const gint count = atspi_accessible_get_child_count(node.accessible, &error);
        g_clear_error(&error);
        for (gint i = count - 1; i >= 0; --i) {
            if (AtspiAccessible *child = atspi_accessible_get_child_at_index(node.accessible, i, &error))
                stack.push_back({child, node.depth + 1});
            g_clear_error(&error);
        }
        g_object_unref(node.accessible);
    }
    return focused;
}

// Qt's bridge hands out QString indices where AT-SPI means characters; the others count
// characters as they should.
bool toolkitCountsUtf16(AtspiAccessible *application)
{
    GError *error = nullptr;
    gchar *name = atspi_accessible_get_toolkit_name(application, &error);
    g_clear_error(&error);
    const bool qt = name && g_ascii_strcasecmp(name, "Qt") == 0;
    g_free(name);
    return qt;
}

} // namespace

QCoro::Task<bool> AtSpiAccessibility::isProcessTrusted()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        co_return false;
    QDBusMessage get = QDBusMessage::createMethodCall(busService, busPath, propertiesInterface, QStringLiteral("Get"));
    get << statusInterface << QStringLiteral("IsEnabled");
    const QDBusPendingCall enabledCall = bus.asyncCall(get, busTimeoutMs);
    const QDBusReply<QDBusVariant> enabled = co_await enabledCall;
    if (!enabled.isValid() || !enabled.value().variant().toBool())
        co_return false;
    const QDBusPendingCall addressCall = bus.asyncCall(
        QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("GetAddress")), busTimeoutMs);
    const QDBusReply<QString> address = co_await addressCall;
    co_return address.isValid() && !address.value().isEmpty();
}

QCoro::Task<bool> AtSpiAccessibility::requestTrust()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        co_return false;
    QDBusMessage set = QDBusMessage::createMethodCall(busService, busPath, propertiesInterface, QStringLiteral("Set"));
    set << statusInterface << QStringLiteral("IsEnabled") << QVariant::fromValue(QDBusVariant(true));
    const QDBusPendingCall call = bus.asyncCall(set, busTimeoutMs);
    const QDBusMessage reply = co_await call;
    if (reply.type() == QDBusMessage::ErrorMessage)
        qCWarning(lcAtSpi) << "switching accessibility on failed:" << reply.errorMessage();
    co_return co_await isProcessTrusted();
}

std::unique_ptr<AccessibleElement> AtSpiAccessibility::focusedElement(qint64 processIdentifier)
{
    // Our own fields answer on the event loop this call blocks: every query would time out.
    if (processIdentifier <= 0 || processIdentifier == QCoreApplication::applicationPid() || !initialized())
        return nullptr;
    AtspiAccessible *application = applicationWithProcess(processIdentifier);
    if (!application)
        return nullptr;
    // Without event listeners libatspi may keep states from an earlier look: ask afresh.
    atspi_accessible_clear_cache(application);
    AtspiAccessible *focused = focusedDescendant(application);
    const auto unit = toolkitCountsUtf16(application) ? AtSpiAccessibleElement::OffsetUnit::utf16
                                                      : AtSpiAccessibleElement::OffsetUnit::codePoint;
    g_object_unref(application);
    if (!focused)
        return nullptr;
    return std::make_unique<AtSpiAccessibleElement>(focused, unit);
}

std::optional<AtSpiAccessibility::ActiveApplication> AtSpiAccessibility::activeApplication()
{
    if (!initialized())
        return std::nullopt;
    AtspiAccessible *desktop = atspi_get_desktop(0);
    if (!desktop)
        return std::nullopt;
    std::optional<ActiveApplication> active;
    GError *error = nullptr;
    const gint count = atspi_accessible_get_child_count(desktop, &error);
    g_clear_error(&error);
    for (gint i = 0; i < count && !active; ++i) {
        AtspiAccessible *application = atspi_accessible_get_child_at_index(desktop, i, &error);
        g_clear_error(&error);
        if (!application)
            continue;
        const guint pid = atspi_accessible_get_process_id(application, &error);
        g_clear_error(&error);
        if (pid > 0 && pid != QCoreApplication::applicationPid()) {
            atspi_accessible_clear_cache(application);
            const gint windows = atspi_accessible_get_child_count(application, &error);
            g_clear_error(&error);
            for (gint w = 0; w < windows && !active; ++w) {
                AtspiAccessible *window = atspi_accessible_get_child_at_index(application, w, &error);
                g_clear_error(&error);
                bool showing = false;
                if (window && hasState(window, ATSPI_STATE_ACTIVE, &showing)) {
                    gchar *name = atspi_accessible_get_name(application, &error);
                    g_clear_error(&error);
                    active = ActiveApplication{pid, QString::fromUtf8(name)};
                    g_free(name);
                }
                if (window)
                    g_object_unref(window);
            }
        }
        g_object_unref(application);
    }
    g_object_unref(desktop);
    return active;
}
