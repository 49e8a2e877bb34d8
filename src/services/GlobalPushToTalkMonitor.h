#pragma once

#include "platform/ApplicationHandle.h"
#include "models/PushToTalkTriggerStateMachine.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

class KeyboardHook;
class Workspace;
struct TriggerKey;

// Watches the trigger key and Space system-wide through the keyboard hook, feeds the
// trigger state machine and carries out its actions: remembers the frontmost
// application when a gesture begins, arms the hold timer and calls the four handlers.
class GlobalPushToTalkMonitor : public QObject
{
    Q_OBJECT

public:
    struct Shortcut {
        QString displayString;
        std::chrono::milliseconds holdDelay{80};
        // The toggle's own shortcut where the desktop binds one; empty for trigger + Space.
        QString toggleDisplayString;
    };

    GlobalPushToTalkMonitor(std::shared_ptr<KeyboardHook> hook, std::shared_ptr<Workspace> workspace,
                            QObject *parent = nullptr);
    ~GlobalPushToTalkMonitor() override;

    // The trigger and toggle as the hook names them, with the 80 ms hold delay.
    [[nodiscard]] Shortcut shortcut() const;
    [[nodiscard]] ApplicationHandlePtr capturedTargetApplication() const { return m_capturedTargetApplication; }
    [[nodiscard]] bool isInstalled() const;
    [[nodiscard]] const PushToTalkTriggerStateMachine &triggerState() const { return m_triggerState; }

    // Throws QuorlaError::hotkeyRegistrationFailed when the keyboard cannot be observed.
    // Installed, installNotice() says what the hook cannot see, if anything.
    void installMonitors();
    [[nodiscard]] const std::optional<QString> &installNotice() const { return m_installNotice; }
    // Removes the hook, cancels the hold timer and resets the trigger state.
    void stop();
    // Watches another trigger key at once. A dictation the old key started ends first
    // (its handler is called), since the old key's release would never be seen.
    // Throws QuorlaError::hotkeyRegistrationFailed when the new key cannot be observed.
    void setTriggerKey(const TriggerKey &key);

    // Feeds one input and performs the returned actions in order.
    PushToTalkTriggerStateMachine::Actions apply(PushToTalkTriggerInput input);

    std::function<void()> holdStartedHandler;
    std::function<void()> holdEndedHandler;
    std::function<void()> toggleStartedHandler;
    std::function<void()> toggleEndedHandler;
    // The trigger was held for another key's shortcut after the hold had begun.
    std::function<void()> holdCancelledHandler;

Q_SIGNALS:
    // The trigger key went down or up (before the hold delay); lets the recorder warm up.
    void triggerKeyChanged(bool down);
    // The hook took another route after installing: `failure` is why it now watches
    // nothing, else installNotice() holds the new notice.
    void routeChanged(std::exception_ptr failure);
    // The desktop renamed the trigger or the toggle: shortcut() reads differently now.
    void shortcutRenamed();

private:
    bool handleSpaceDown(bool autoRepeat, bool triggerFlag);
    bool handleSpaceUp();
    void handleToggleRequest();
    void scheduleHoldStart();
    void endGestureInProgress();
    void updateSpaceCapture();

    std::shared_ptr<KeyboardHook> m_hook;
    std::shared_ptr<Workspace> m_workspace;
    ApplicationHandlePtr m_capturedTargetApplication;
    QTimer m_holdTimer;
    bool m_suppressSpaceKeyUp = false;
    PushToTalkTriggerStateMachine m_triggerState;
    std::optional<QString> m_installNotice;
};
