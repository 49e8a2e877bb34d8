#pragma once

#include <QCoro/QCoroTask>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>
#include <chrono>

// The xdg-desktop-portal request pattern: a method returns a Request object at once and
// answers later with its Response signal, after whatever dialog the desktop shows.
namespace Portal {

inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
inline const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

struct Response {
    uint code = 2; // 0 granted, 1 cancelled by the user, 2 ended otherwise (also: no answer)
    QVariantMap results;
    [[nodiscard]] bool granted() const { return code == 0; }
};

// One entry of the GlobalShortcuts a(sa{sv}) lists: an id and its properties
// ("description", "preferred_trigger", "trigger_description").
struct Shortcut {
    QString id;
    QVariantMap properties;
};
using Shortcuts = QList<Shortcut>;

// Registers the D-Bus types above; safe to call more than once.
void registerTypes();

// The Request path the portal uses for `token` on `bus`, known before the call so the
// Response cannot be missed.
QString requestPath(const QDBusConnection &bus, const QString &token);

// A session handle as the results carry it (an object path or its text).
QString pathText(const QVariant &value);

// Calls `method` on the portal with `arguments` and `options` (a handle_token added) and
// waits for its Response. A refused call, or no Response within `limit`, answers code 2.
QCoro::Task<Response> request(QDBusConnection bus, QString service, QString interface, QString method,
                              QVariantList arguments, QVariantMap options, std::chrono::milliseconds limit);

} // namespace Portal

Q_DECLARE_METATYPE(Portal::Shortcut)
Q_DECLARE_METATYPE(Portal::Shortcuts)
QDBusArgument &operator<<(QDBusArgument &argument, const Portal::Shortcut &shortcut);
const QDBusArgument &operator>>(const QDBusArgument &argument, Portal::Shortcut &shortcut);
