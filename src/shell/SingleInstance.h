#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

// One Quorla per session: the first launch owns the application id on the session
// bus; a later launch asks it to show its window (org.freedesktop.Application's
// Activate) and exits.
class SingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    enum class Role { primary,
                      secondary,
                      unavailable };

    SingleInstance(QString applicationId, QDBusConnection bus, QObject *parent = nullptr);

    // Tries to own the name. unavailable: no session bus, so no single-instance guard.
    Role claim();
    // From a secondary launch: asks the owner to show its window; false when it did not answer.
    bool activatePrimary();
    // "/app/quorla/Quorla" for "app.quorla.Quorla".
    static QString objectPath(const QString &applicationId);

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);

Q_SIGNALS:
    void activationRequested();

private:
    QString m_applicationId;
    QDBusConnection m_bus;
};
