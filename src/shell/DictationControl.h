#pragma once

#include <QCoro/QCoroTask>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

class AppModel;

// The "app.quorla.Quorla.Dictation" interface on the single-instance object: dictation
// started and ended from outside, for desktops where Quorla cannot see the trigger key
// (a key bound to `quorla dictation …` in the desktop's settings), scripts and switch
// devices. Start and Stop act as the trigger going down and up, Toggle as trigger +
// Space, Cancel drops the recording unsent. Only callers of this user are served.
class DictationControl : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.quorla.Quorla.Dictation")
    // "idle", "recording" or "transcribing"; changes are announced with PropertiesChanged.
    Q_PROPERTY(QString State READ state)

public:
    // exported: the object at path, registered with its adaptors exported.
    DictationControl(AppModel &model, QObject *exported, QDBusConnection bus, QString path);

    [[nodiscard]] QString state() const;
    static QString interfaceName();

public Q_SLOTS:
    void Start(const QDBusMessage &call);
    void Stop(const QDBusMessage &call);
    void Toggle(const QDBusMessage &call);
    void Cancel(const QDBusMessage &call);

private:
    enum class Command { start,
                         stop,
                         toggle,
                         cancel };

    void accept(const QDBusMessage &call, Command command);
    QCoro::Task<> runIfSameUser(QDBusMessage call, Command command);
    void run(Command command);
    void announceState();

    AppModel &m_model;
    QDBusConnection m_bus;
    QString m_path;
    QString m_announcedState;
};
