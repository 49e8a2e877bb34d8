#pragma once

#include "platform/KeyboardHook.h"
#include "platform/linux/PortalRequest.h"

#include <QCoro/QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <memory>

// The trigger and the toggle as two shortcuts of the desktop's GlobalShortcuts portal
// (KDE Plasma 5.27+, GNOME 48+, Hyprland). The desktop owns the keys: no portal binds a
// lone modifier, so the defaults are chords the user changes in the desktop's shortcut
// settings, the trigger key setting does not apply, and Space is never seen (the toggle
// is the second shortcut). Nothing here holds a key: a busy main thread only delays
// the events. Where the portal offers no such session, `fallback` serves instead.
class PortalShortcutsHook : public QObject, public KeyboardHook
{
    Q_OBJECT

public:
    static inline const QString holdId = QStringLiteral("dictate-hold");
    static inline const QString toggleId = QStringLiteral("dictate-toggle");
    // The defaults offered to the desktop, in the shortcuts notation portals read.
    static inline const QString holdChord = QStringLiteral("CTRL+ALT+d");
    static inline const QString toggleChord = QStringLiteral("CTRL+ALT+space");

    explicit PortalShortcutsHook(std::shared_ptr<KeyboardHook> fallback,
                                 QDBusConnection bus = QDBusConnection::sessionBus(),
                                 QString service = Portal::service);
    ~PortalShortcutsHook() override;

    // Opens the portal session in the background; when the desktop refuses it, the fallback
    // is installed instead and routeChanged tells its outcome.
    InstallOutcome install(Events events) override;
    void uninstall() override;
    [[nodiscard]] bool isInstalled() const override;
    void setSpaceCaptureWanted(bool wanted) override;
    // The hold and toggle shortcuts as the desktop describes them, once known.
    [[nodiscard]] QString triggerDisplayName() const override;
    [[nodiscard]] QString toggleDisplayName() const override;
    // The desktop's dialog chooses the portal's keys; the fallback watches this one.
    InstallOutcome setTriggerKey(const TriggerKey &key) override;
    // Test hook: the desktop opened the session (KDE has bound the shortcuts by then).
    [[nodiscard]] bool isSettled() const { return !m_session.isEmpty(); }

    // For the portal's signals (QtDBus calls only public slots).
public Q_SLOTS:
    // Activated or Deactivated: (session, shortcut id, timestamp, options).
    void shortcutChanged(const QDBusMessage &message);
    // ShortcutsChanged: (session, shortcuts), after the user rebinds them.
    void shortcutsRebound(const QDBusMessage &message);
    void sessionClosed();

private:
    QCoro::Task<void> openSession(quint64 generation);
    void connectSignals(bool on);
    void releaseHeldTrigger();
    void noteDescriptions(const QVariant &shortcuts);
    void fallBack();

    std::shared_ptr<KeyboardHook> m_fallback;
    bool m_fellBack = false;
    QDBusConnection m_bus;
    QString m_service;
    Events m_events;
    QString m_session;
    QString m_triggerName;
    QString m_toggleName;
    quint64 m_generation = 0; // ends a session opening that outlived its install()
    bool m_installed = false;
    bool m_triggerDown = false;
    bool m_toggleDown = false;
};
