#include "AtSpiKeystrokeWatch.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVirtualObject>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcAtSpiKeys, "quorla.atspi.keys")

namespace {

const QString listenerPath = QStringLiteral("/app/quorla/KeystrokeListener");
const QString listenerInterface = QStringLiteral("org.a11y.atspi.DeviceEventListener");
constexpr uint keyPressedType = 0;
constexpr uint keyPressedTypes = 1U << keyPressedType;

// One key of a listener's key set: keycode, keysym, key string, unused. The set is left empty:
// every key.
struct KeyDefinition {
    qint32 keycode = 0;
    qint32 keysym = 0;
    QString keystring;
    qint32 unused = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const KeyDefinition &key)
{
    argument.beginStructure();
    argument << key.keycode << key.keysym << key.keystring << key.unused;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, KeyDefinition &key)
{
    argument.beginStructure();
    argument >> key.keycode >> key.keysym >> key.keystring >> key.unused;
    argument.endStructure();
    return argument;
}

// Answers the registry's NotifyEvent((uiuuisb)) -> b, never consuming the key.
class KeystrokeListener : public QDBusVirtualObject
{
public:
    explicit KeystrokeListener(AtSpiKeystrokeWatch *watch)
        : m_watch(watch)
    {
    }

    QString introspect(const QString &) const override
    {
        return QStringLiteral(R"xml(<interface name="org.a11y.atspi.DeviceEventListener">)xml"
                              R"xml(<method name="NotifyEvent"><arg direction="in" type="(uiuuisb)"/>)xml"
                              R"xml(<arg direction="out" type="b"/></method></interface>)xml");
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.interface() != listenerInterface || message.member() != u"NotifyEvent")
            return false;
        uint type = 1;
        if (!message.arguments().isEmpty()) {
            const auto event = message.arguments().constFirst().value<QDBusArgument>();
            event.beginStructure();
            event >> type;
            event.endStructure();
        }
        connection.send(message.createReply(false));
        if (type == keyPressedType)
            Q_EMIT m_watch->keyPressed();
        return true;
    }

private:
    AtSpiKeystrokeWatch *m_watch;
};

QDBusMessage deviceEventControllerCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.a11y.atspi.Registry"),
                                          QStringLiteral("/org/a11y/atspi/registry/deviceeventcontroller"),
                                          QStringLiteral("org.a11y.atspi.DeviceEventController"), method);
}

} // namespace

Q_DECLARE_METATYPE(KeyDefinition)

AtSpiKeystrokeWatch::AtSpiKeystrokeWatch(QObject *parent)
    : QObject(parent)
    , m_listener(std::make_unique<KeystrokeListener>(this))
{
    qDBusRegisterMetaType<KeyDefinition>();
    qDBusRegisterMetaType<QList<KeyDefinition>>();
}

AtSpiKeystrokeWatch::~AtSpiKeystrokeWatch()
{
    stop();
    if (m_bus)
        m_bus->unregisterObject(listenerPath);
}

void AtSpiKeystrokeWatch::start()
{
    m_wanted = true;
    if (m_bus)
        setRegistered(true);
    else
        connectBus();
}

void AtSpiKeystrokeWatch::stop()
{
    m_wanted = false;
    if (m_bus)
        setRegistered(false);
}

void AtSpiKeystrokeWatch::connectBus()
{
    if (m_connecting)
        return;
    m_connecting = true;
    const QDBusMessage getAddress = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"), QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    auto *call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(getAddress), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        m_connecting = false;
        const QDBusPendingReply<QString> address = *call;
        if (address.isError()) {
            qCInfo(lcAtSpiKeys) << "no accessibility bus; keys of applications are not heard:" << address.error().message();
            return;
        }
        QDBusConnection bus = QDBusConnection::connectToBus(address.value(), QStringLiteral("quorla-atspi-keys"));
        if (!bus.isConnected() || !bus.registerVirtualObject(listenerPath, m_listener.get())) {
            qCInfo(lcAtSpiKeys) << "the accessibility bus refused the keystroke listener";
            return;
        }
        m_bus = bus;
        setRegistered(m_wanted);
    });
}

void AtSpiKeystrokeWatch::setRegistered(bool registered)
{
    if (registered == m_registered)
        return;
    m_registered = registered;
    QDBusMessage call = deviceEventControllerCall(registered ? QStringLiteral("RegisterKeystrokeListener")
                                                             : QStringLiteral("DeregisterKeystrokeListener"));
    QDBusArgument mode;
    mode.beginStructure();
    mode << false << false << false; // not synchronous, not preemptive, not global
    mode.endStructure();
    call << QVariant::fromValue(QDBusObjectPath(listenerPath)) << QVariant::fromValue(QList<KeyDefinition>())
         << 0U << keyPressedTypes;
    if (registered)
        call << QVariant::fromValue(mode);
    m_bus->asyncCall(call);
}
