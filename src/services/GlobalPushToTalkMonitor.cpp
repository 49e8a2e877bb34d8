#include "GlobalPushToTalkMonitor.h"

#include "models/TriggerKey.h"
#include "platform/KeyboardHook.h"
#include "platform/Workspace.h"

GlobalPushToTalkMonitor::GlobalPushToTalkMonitor(std::shared_ptr<KeyboardHook> hook,
                                                 std::shared_ptr<Workspace> workspace, QObject *parent)
    : QObject(parent)
    , m_hook(std::move(hook))
    , m_workspace(std::move(workspace))
{
    m_holdTimer.setSingleShot(true);
    m_holdTimer.setTimerType(Qt::PreciseTimer);
    m_holdTimer.setInterval(shortcut().holdDelay);
    connect(&m_holdTimer, &QTimer::timeout, this, [this] { apply(PushToTalkTriggerInput::holdDelayElapsed()); });
}

GlobalPushToTalkMonitor::~GlobalPushToTalkMonitor()
{
    if (m_hook)
        m_hook->uninstall();
}

GlobalPushToTalkMonitor::Shortcut GlobalPushToTalkMonitor::shortcut() const
{
    return {m_hook->triggerDisplayName(), std::chrono::milliseconds(80), m_hook->toggleDisplayName()};
}

bool GlobalPushToTalkMonitor::isInstalled() const
{
    return m_hook->isInstalled();
}

void GlobalPushToTalkMonitor::installMonitors()
{
    KeyboardHook::Events events;
    events.triggerChanged = [this](bool down) {
        Q_EMIT triggerKeyChanged(down);
        apply(down ? PushToTalkTriggerInput::fnDown() : PushToTalkTriggerInput::fnUp());
    };
    events.spaceDown = [this](bool autoRepeat, bool triggerFlag) { return handleSpaceDown(autoRepeat, triggerFlag); };
    events.spaceUp = [this] { return handleSpaceUp(); };
    events.toggleRequested = [this] { handleToggleRequest(); };
    events.routeChanged = [this](std::exception_ptr failure, std::optional<QString> notice) {
        m_installNotice = std::move(notice);
        Q_EMIT routeChanged(std::move(failure));
    };
    events.namesChanged = [this] { Q_EMIT shortcutRenamed(); };
    events.otherKeyDown = [this] {
        // Like a tap, a shortcut needs no microphone.
        if (!apply(PushToTalkTriggerInput::otherKeyDown()).empty())
            Q_EMIT triggerKeyChanged(false);
    };
    m_installNotice = m_hook->install(std::move(events)).notice;
}

void GlobalPushToTalkMonitor::stop()
{
    m_holdTimer.stop();
    m_triggerState.reset();
    m_capturedTargetApplication.reset();
    m_installNotice.reset();
    m_hook->uninstall();
}

void GlobalPushToTalkMonitor::setTriggerKey(const TriggerKey &key)
{
    endGestureInProgress();
    m_installNotice.reset();
    m_installNotice = m_hook->setTriggerKey(key).notice;
}

void GlobalPushToTalkMonitor::endGestureInProgress()
{
    const PushToTalkTriggerPhase phase = m_triggerState.phase;
    m_holdTimer.stop();
    m_triggerState.reset();
    m_capturedTargetApplication.reset();
    m_suppressSpaceKeyUp = false;
    updateSpaceCapture();
    if (phase == PushToTalkTriggerPhase::holdActive && holdEndedHandler)
        holdEndedHandler();
    if (phase == PushToTalkTriggerPhase::toggleActive && toggleEndedHandler)
        toggleEndedHandler();
}

bool GlobalPushToTalkMonitor::handleSpaceDown(bool autoRepeat, bool triggerFlag)
{
    if (autoRepeat)
        return false;
    const bool consumed = !apply(PushToTalkTriggerInput::spaceDown(triggerFlag)).empty();
    if (consumed)
        m_suppressSpaceKeyUp = true;
    return consumed;
}

bool GlobalPushToTalkMonitor::handleSpaceUp()
{
    const bool swallow = m_suppressSpaceKeyUp;
    m_suppressSpaceKeyUp = false;
    apply(PushToTalkTriggerInput::spaceUp());
    return swallow;
}

PushToTalkTriggerStateMachine::Actions GlobalPushToTalkMonitor::apply(PushToTalkTriggerInput input)
{
    const auto actions = m_triggerState.handle(input);
    for (const PushToTalkTriggerAction action : actions) {
        switch (action) {
        case PushToTalkTriggerAction::captureTargetApplication:
            m_capturedTargetApplication = m_workspace->frontmostApplication();
            break;
        case PushToTalkTriggerAction::clearTargetApplication:
            m_capturedTargetApplication.reset();
            break;
        case PushToTalkTriggerAction::scheduleHold:
            scheduleHoldStart();
            break;
        case PushToTalkTriggerAction::cancelHold:
            m_holdTimer.stop();
            break;
        case PushToTalkTriggerAction::notifyHoldStarted:
            if (holdStartedHandler)
                holdStartedHandler();
            break;
        case PushToTalkTriggerAction::notifyHoldEnded:
            if (holdEndedHandler)
                holdEndedHandler();
            break;
        case PushToTalkTriggerAction::notifyToggleStarted:
            if (toggleStartedHandler)
                toggleStartedHandler();
            break;
        case PushToTalkTriggerAction::notifyToggleEnded:
            if (toggleEndedHandler)
                toggleEndedHandler();
            break;
        case PushToTalkTriggerAction::notifyHoldCancelled:
            if (holdCancelledHandler)
                holdCancelledHandler();
            break;
        }
    }
    updateSpaceCapture();
    return actions;
}

void GlobalPushToTalkMonitor::handleToggleRequest()
{
    // The same facts as trigger + Space; a trigger the hook does not hold is let go again.
    const bool triggerHeld = m_triggerState.isFnPressed;
    apply(PushToTalkTriggerInput::spaceDown(true));
    apply(PushToTalkTriggerInput::spaceUp());
    if (!triggerHeld)
        apply(PushToTalkTriggerInput::fnUp());
}

void GlobalPushToTalkMonitor::scheduleHoldStart()
{
    m_holdTimer.start(shortcut().holdDelay);
}

void GlobalPushToTalkMonitor::updateSpaceCapture()
{
    if (m_hook->isInstalled())
        m_hook->setSpaceCaptureWanted(m_triggerState.wouldConsumeSpace());
}
