#pragma once

#include "platform/linux/PortalRequest.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

// The desktop portal's GlobalShortcuts and RemoteDesktop at the D-Bus boundary, on a
// connection of its own to the test bus. Each request's Response follows its reply, as
// with the real portals.
class FakePortal : public QDBusVirtualObject
{
public:
    FakePortal();
    ~FakePortal() override;

    [[nodiscard]] QString service() const { return m_bus.baseService(); }
    // Activated or Deactivated of shortcut `id`, ShortcutsChanged, or Closed: from the last session.
    void emitSignal(const QString &name, const QString &id = {});

    uint consent = 0;          // the answer to requests that ask the user: BindShortcuts, Start
    bool bindsAtCreate = true; // KDE 5.27 binds CreateSession's shortcuts
    uint version = 2;
    bool globalShortcuts = true;         // false: GNOME before 48, sway
    QStringList calls;                   // method names, in order
    QHash<QString, QVariantMap> options; // the last options, by method
    QList<QPair<int, uint>> keys;        // NotifyKeyboardKeysym: keysym, pressed

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override;

private:
    QDBusConnection m_bus;
    QString m_session;
    bool m_bound = false;
    int m_unansweredKeys = 0;
};
