#include "SingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcInstance, "quorla.instance")

namespace {
const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
}

SingleInstance::SingleInstance(QString applicationId, QDBusConnection bus, QObject *parent)
    : QObject(parent)
    , m_applicationId(std::move(applicationId))
    , m_bus(std::move(bus))
{
}

QString SingleInstance::objectPath(const QString &applicationId)
{
    return QLatin1Char('/') + QString(applicationId).replace(QLatin1Char('.'), QLatin1Char('/'));
}

SingleInstance::Role SingleInstance::claim()
{
    if (!m_bus.isConnected() || !m_bus.interface()) {
        qCWarning(lcInstance) << "no session bus; a second launch will start a second Quorla";
        return Role::unavailable;
    }
    const auto reply = m_bus.interface()->registerService(m_applicationId, QDBusConnectionInterface::DontQueueService,
                                                          QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid()) {
        qCWarning(lcInstance) << "could not claim" << m_applicationId << reply.error().message();
        return Role::unavailable;
    }
    if (reply.value() != QDBusConnectionInterface::ServiceRegistered)
        return Role::secondary;
    // Adaptors too: the dictation interface hangs off this object.
    if (!m_bus.registerObject(objectPath(m_applicationId), this,
                              QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportAdaptors))
        qCWarning(lcInstance) << "could not export the activation object" << m_bus.lastError().message();
    return Role::primary;
}

bool SingleInstance::activatePrimary()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(m_applicationId, objectPath(m_applicationId), applicationInterface,
                                       QStringLiteral("Activate"));
    call << QVariantMap();
    const QDBusMessage reply = m_bus.call(call, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        qCWarning(lcInstance) << "the running Quorla did not answer:" << reply.errorMessage();
        return false;
    }
    return true;
}

void SingleInstance::Activate(const QVariantMap &platformData)
{
    Q_UNUSED(platformData)
    Q_EMIT activationRequested();
}
