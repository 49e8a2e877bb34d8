#pragma once

#include "models/TriggerKey.h"
#include "platform/KeyboardHook.h"
#include "platform/linux/AtSpiKeystrokeWatch.h"
#include "platform/linux/SwayIpcConnection.h"

#include <QPointer>
#include <QStringList>
#include <QTimer>

// The trigger key and Space under sway: key bindings added at run time over sway's IPC,
// each running a `nop` whose text comes back as a binding event. The compositor swallows
// a bound key, so Space is bound only while a press would be consumed, like the X11 grab.
//
// sway drops the release binding when another key was pressed while the trigger was held,
// so a Space during the hold ends the trigger at the Space's release (or, should that be
// lost too, a moment later), and a press of a trigger we still think is down stands for the
// release we never saw. While the trigger is down, keys that applications report to the
// accessibility bus make the gesture a shortcut whose release is known lost; keys of other
// applications are never heard, so a hold that falls silent for long is ended through
// endStuckTrigger().
//
// Bindings outlive a Quorla that was killed or crashed, and sway can neither list them nor
// unbind by command: the ones in effect are kept in a file of the session's runtime folder,
// and the next install removes whatever an earlier run left there.
class SwayKeyboardHook : public KeyboardHook
{
public:
    explicit SwayKeyboardHook(TriggerKey trigger, QString socketPath);
    ~SwayKeyboardHook() override;

    InstallOutcome install(Events events) override;
    void uninstall() override;
    [[nodiscard]] bool isInstalled() const override { return m_connection != nullptr; }
    void setSpaceCaptureWanted(bool wanted) override;
    [[nodiscard]] QString triggerDisplayName() const override { return m_trigger.displayName; }
    InstallOutcome setTriggerKey(const TriggerKey &key) override;
    bool endStuckTrigger() override;

    // Test hook: sway has carried out every binding change asked for so far.
    [[nodiscard]] bool isSettled() const;
    // Test hook: lets go of sway as a killed Quorla would, its bindings left in place.
    void abandon();

private:
    void runCommands(const QStringList &commands);
    void recordBindings(const QStringList &commands);
    [[nodiscard]] QStringList leftoverUnbindings() const;
    void handleBinding(const QJsonDocument &event);
    void triggerPressed();
    void triggerReleased();
    void deliverTriggerUp();
    void otherKeyPressed();

    TriggerKey m_trigger;
    QString m_socketPath;
    QString m_recordFile;
    QStringList m_bound; // the bindsym commands in effect
    Events m_events;
    QPointer<SwayIpcConnection> m_connection;
    bool m_spaceBound = false;
    bool m_triggerDown = false;
    // A key met the held trigger, so sway will not report its release.
    bool m_releaseMayBeLost = false;
    // The release of a press that only stood in for a lost release.
    bool m_ignoreNextRelease = false;
    // Ends a trigger whose release may be lost, once the Space that met it fell silent.
    QTimer m_lostReleaseTimer;
    AtSpiKeystrokeWatch m_keystrokes;
};
