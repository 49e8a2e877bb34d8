#include "PortalRequest.h"

#include <QCoro/QCoroDBusPendingCall>
#include <QCoro/QCoroSignal>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <optional>

namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString responseSignal = QStringLiteral("Response");
const char *const responseSlot = SLOT(receive(uint, QVariantMap));

// Keeps the one Response of a request; it can arrive before the method's own reply.
class ResponseReceiver : public QObject
{
    Q_OBJECT

public:
    std::optional<Portal::Response> response;

public Q_SLOTS:
    void receive(uint code, const QVariantMap &results)
    {
        response = Portal::Response{code, results};
        Q_EMIT received();
    }

Q_SIGNALS:
    void received();
};

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const Portal::Shortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Portal::Shortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace Portal {

void registerTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<Shortcut>();
        qDBusRegisterMetaType<Shortcuts>();
        return true;
    }();
    Q_UNUSED(registered);
}

QString requestPath(const QDBusConnection &bus, const QString &token)
{
    QString sender = bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    return objectPath + QStringLiteral("/request/") + sender + u'/' + token;
}

QString pathText(const QVariant &value)
{
    if (value.canConvert<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    return value.toString();
}

QCoro::Task<Response> request(QDBusConnection bus, QString service, QString interface, QString method,
                              QVariantList arguments, QVariantMap options, std::chrono::milliseconds limit)
{
    static uint counter = 0;
    const QString token = QStringLiteral("quorla%1").arg(++counter);
    options.insert(QStringLiteral("handle_token"), token);
    ResponseReceiver receiver;
    QString path = requestPath(bus, token);
    bus.connect(service, path, requestInterface, responseSignal, &receiver, responseSlot);

    QDBusMessage call = QDBusMessage::createMethodCall(service, objectPath, interface, method);
    call.setArguments(arguments << QVariant::fromValue(options));
    const QDBusMessage reply = co_await bus.asyncCall(call);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        bus.disconnect(service, path, requestInterface, responseSignal, &receiver, responseSlot);
        co_return Response{2, {{QStringLiteral("error"), reply.errorMessage()}}};
    }
    // Portals older than the handle_token option choose the path themselves.
    const QString handle = reply.arguments().value(0).value<QDBusObjectPath>().path();
    if (!handle.isEmpty() && handle != path) {
        bus.disconnect(service, path, requestInterface, responseSignal, &receiver, responseSlot);
        path = handle;
        bus.connect(service, path, requestInterface, responseSignal, &receiver, responseSlot);
    }
    if (!receiver.response)
        co_await qCoro(&receiver, &ResponseReceiver::received, limit);
    bus.disconnect(service, path, requestInterface, responseSignal, &receiver, responseSlot);
    co_return receiver.response.value_or(Response{});
}

} // namespace Portal

#include "PortalRequest.moc"
