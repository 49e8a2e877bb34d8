#include "DictationControl.h"

#include "app/AppModel.h"

#include <QCoro/QCoroDBusPendingCall>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QLoggingCategory>
#include <QPointer>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcDictationControl, "quorla.dictation.control")

DictationControl::DictationControl(AppModel &model, QObject *exported, QDBusConnection bus, QString path)
    : QDBusAbstractAdaptor(exported)
    , m_model(model)
    , m_bus(std::move(bus))
    , m_path(std::move(path))
    , m_announcedState(state())
{
    // Queued: a stop clears recording just before it sets busy, and no one should hear "idle" between.
    connect(&m_model, &AppModel::isRecordingChanged, this, &DictationControl::announceState, Qt::QueuedConnection);
    connect(&m_model, &AppModel::isBusyChanged, this, &DictationControl::announceState, Qt::QueuedConnection);
}

QString DictationControl::interfaceName()
{
    return QStringLiteral("app.quorla.Quorla.Dictation");
}

QString DictationControl::state() const
{
    if (m_model.isRecording())
        return QStringLiteral("recording");
    return m_model.isBusy() ? QStringLiteral("transcribing") : QStringLiteral("idle");
}

void DictationControl::Start(const QDBusMessage &call)
{
    accept(call, Command::start);
}

void DictationControl::Stop(const QDBusMessage &call)
{
    accept(call, Command::stop);
}

void DictationControl::Toggle(const QDBusMessage &call)
{
    accept(call, Command::toggle);
}

void DictationControl::Cancel(const QDBusMessage &call)
{
    accept(call, Command::cancel);
}

void DictationControl::accept(const QDBusMessage &call, Command command)
{
    // The reply waits for the bus to name the caller's user, without holding the event loop.
    call.setDelayedReply(true);
    runIfSameUser(call, command);
}

QCoro::Task<> DictationControl::runIfSameUser(QDBusMessage call, Command command)
{
    const QPointer<DictationControl> self(this);
    QDBusConnection bus = m_bus;
    const QDBusReply<uint> caller = co_await bus.interface()->asyncCall(
        QStringLiteral("GetConnectionUnixUser"), call.service());
    if (!caller.isValid() || caller.value() != uint(::getuid())) {
        qCWarning(lcDictationControl) << "refused a dictation command from" << call.service();
        bus.send(call.createErrorReply(QDBusError::AccessDenied,
                                       QStringLiteral("Only the user running Quorla can control its dictation.")));
        co_return;
    }
    bus.send(call.createReply());
    if (self)
        self->run(command);
}

void DictationControl::run(Command command)
{
    // The operations finish on their own; the caller learns the outcome from State.
    switch (command) {
    case Command::start:
        m_model.commandPressToTalkBegan();
        break;
    case Command::stop:
        m_model.commandPressToTalkEnded();
        break;
    case Command::toggle:
        m_model.commandToggleRecordingRequested();
        break;
    case Command::cancel:
        m_model.cancelRecording();
        break;
    }
}

void DictationControl::announceState()
{
    const QString current = state();
    if (current == m_announcedState)
        return;
    m_announcedState = current;
    QDBusMessage changed = QDBusMessage::createSignal(m_path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("PropertiesChanged"));
    changed << interfaceName() << QVariantMap{{QStringLiteral("State"), current}} << QStringList();
    m_bus.send(changed);
}
