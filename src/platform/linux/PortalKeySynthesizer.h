#pragma once

#include "platform/KeySynthesizer.h"
#include "platform/linux/PortalRequest.h"

#include <QCoro/QCoroTask>
#include <QDBusConnection>
#include <QObject>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

// Keys through a keyboard-only session of the desktop's RemoteDesktop portal (KDE, GNOME).
// The session opens at the first paste, never at start-up: GNOME asks the user's consent
// then, and where the portal can persist it (version 2) the token it hands back spares the
// question on later runs. Keys go as keysyms, which the desktop looks up in its keymap: the
// physical key of V is another letter on Dvorak or Bépo, and a remapped Ctrl is not
// where evdev's left Ctrl is. (GNOME looks in the layout in use, so one without Latin
// letters has no V to find; KDE 5.27 looks in the first layout.) Where the portal is
// missing or the user refuses, `fallback` (when there is one) sends the keys instead.
class PortalKeySynthesizer : public QObject, public KeySynthesizer
{
    Q_OBJECT

public:
    // `restoreTokenFile` keeps the consent token between runs.
    PortalKeySynthesizer(QString restoreTokenFile, std::shared_ptr<KeySynthesizer> fallback,
                         QDBusConnection bus = QDBusConnection::sessionBus(), QString service = Portal::service);
    ~PortalKeySynthesizer() override;

    void prepare(const std::function<void(bool ready)> &ready) override;
    // False until prepare() reported ready, and after the desktop closed the session.
    bool sendBackspace() override;
    bool sendPasteShortcut(PasteShortcut shortcut) override;
    // The portal cannot tell; the keys go out as they are.
    bool isAnyModifierPressed() override { return m_fellBack && m_fallback->isAnyModifierPressed(); }

    // For the portal's signal (QtDBus calls only public slots).
public Q_SLOTS:
    void sessionClosed();

private:
    QCoro::Task<void> openSession();
    void finishOpening(bool ready);
    void failOpening(const QString &session, const QString &step, const Portal::Response &response);
    bool sendKeys(std::initializer_list<int> keysyms);
    QCoro::Task<void> sendQueuedKeys();

    QString m_tokenFile;
    std::shared_ptr<KeySynthesizer> m_fallback;
    bool m_fellBack = false; // the last prepare() found no portal session: the fallback serves
    QDBusConnection m_bus;
    QString m_service;
    QString m_session; // set once the session started
    bool m_opening = false;
    std::vector<std::function<void(bool)>> m_waiting;
    std::deque<std::pair<int, uint>> m_keys; // keysym, pressed: waiting to go out
    bool m_sendingKeys = false;
};
