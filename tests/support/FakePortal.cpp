#include "FakePortal.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QTimer>
#include <QUuid>

FakePortal::FakePortal()
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QUuid::createUuid().toString()))
{
    Portal::registerTypes();
    m_bus.registerVirtualObject(Portal::objectPath, this, QDBusConnection::SubPath);
}

FakePortal::~FakePortal()
{
    m_bus.unregisterObject(Portal::objectPath, QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_bus.name());
}

namespace {

Portal::Shortcuts describedShortcuts(const QString &hold, const QString &toggle)
{
    const auto described = [](const QString &chord) { return QVariantMap{{QStringLiteral("trigger_description"), chord}}; };
    return {{QStringLiteral("dictate-hold"), described(hold)}, {QStringLiteral("dictate-toggle"), described(toggle)}};
}

} // namespace

void FakePortal::emitSignal(const QString &name, const QString &id)
{
    if (name == QLatin1String("Closed")) {
        m_bus.send(QDBusMessage::createSignal(m_session, Portal::sessionInterface, name) << QVariantMap());
        return;
    }
    QDBusMessage signal = QDBusMessage::createSignal(Portal::objectPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"), name)
                       << QVariant::fromValue(QDBusObjectPath(m_session));
    if (name == QLatin1String("ShortcutsChanged")) // the user rebound both in the desktop's settings
        m_bus.send(signal << QVariant::fromValue(describedShortcuts(QStringLiteral("Meta+H"), QStringLiteral("Meta+T"))));
    else
        m_bus.send(signal << id << qulonglong(0) << QVariantMap());
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    const QString method = message.member();
    const QVariantList arguments = message.arguments();
    calls << method;
    if (!globalShortcuts && message.interface().endsWith(QLatin1String("GlobalShortcuts")))
        return m_bus.send(message.createErrorReply(QDBusError::UnknownInterface, method));
    if (method == QLatin1String("Get"))
        return m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(version))));
    if (method == QLatin1String("NotifyKeyboardKeysym")) {
        // The real portal handles each call on a thread of its own: a key sent before the
        // last one was answered may overtake it.
        keys.insert(m_unansweredKeys++ > 0 ? keys.size() - 1 : keys.size(), {arguments.value(2).toInt(), arguments.value(3).toUInt()});
        QTimer::singleShot(0, this, [this, reply = message.createReply()] {
            --m_unansweredKeys;
            m_bus.send(reply);
        });
        return true;
    }
    if (method.startsWith(QLatin1String("NotifyKeyboard")) || method == QLatin1String("Close"))
        return m_bus.send(message.createReply());

    const QVariantMap given = options[method] = qdbus_cast<QVariantMap>(arguments.last());
    const QString sender = message.service().mid(1).replace(u'.', u'_') + u'/';
    const QString request = Portal::objectPath + QStringLiteral("/request/") + sender
                          + given.value(QStringLiteral("handle_token")).toString();
    const bool asksUser = method == QLatin1String("BindShortcuts") || method == QLatin1String("Start");
    const Portal::Shortcuts bound = describedShortcuts(QStringLiteral("Ctrl+Alt+H"), QStringLiteral("Ctrl+Alt+T"));
    QVariantMap results;
    if (method == QLatin1String("CreateSession")) {
        m_session = Portal::objectPath + QStringLiteral("/session/") + sender
                  + given.value(QStringLiteral("session_handle_token")).toString();
        results.insert(QStringLiteral("session_handle"), m_session);
        m_bound = bindsAtCreate && given.contains(QStringLiteral("shortcuts"));
    } else if (method.endsWith(QLatin1String("Shortcuts"))) {
        m_bound = m_bound || (asksUser && consent == 0);
        results.insert(QStringLiteral("shortcuts"), QVariant::fromValue(m_bound ? bound : Portal::Shortcuts{}));
    } else if (method == QLatin1String("Start")) {
        results.insert(QStringLiteral("devices"), 1u);
        if (version >= 2)
            results.insert(QStringLiteral("restore_token"), QStringLiteral("granted-once"));
    }
    m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    return m_bus.send(QDBusMessage::createSignal(request, QStringLiteral("org.freedesktop.portal.Request"),
                                                 QStringLiteral("Response"))
                      << (asksUser ? consent : 0u) << results);
}
