#include "SpaceCaptureTracker.h"

std::optional<bool> SpaceCaptureTracker::triggerKeyChanged(std::uint8_t keycode, bool down)
{
    const bool wasDown = isTriggerDown();
    m_triggerKeysDown.set(keycode, down);
    if (isTriggerDown() == wasDown)
        return std::nullopt;
    m_machine.handle(down ? PushToTalkTriggerInput::fnDown() : PushToTalkTriggerInput::fnUp());
    return down;
}

SpaceCaptureTracker::SpacePress SpaceCaptureTracker::spaceDown()
{
    SpacePress press;
    press.triggerFlag = isTriggerDown();
    if (m_spaceDown) {
        // Repeats follow their first press: an active grab keeps them until the release.
        press.autoRepeat = true;
        press.swallowed = !m_spacePassedThrough;
        return press;
    }
    press.swallowed = wantsSpaceGrab();
    m_spaceDown = true;
    m_spacePassedThrough = !press.swallowed;
    m_machine.handle(PushToTalkTriggerInput::spaceDown(press.triggerFlag));
    return press;
}

void SpaceCaptureTracker::spaceUp()
{
    m_spaceDown = false;
    m_spacePassedThrough = false;
    m_machine.handle(PushToTalkTriggerInput::spaceUp());
}

void SpaceCaptureTracker::reset()
{
    *this = {};
}

bool SpaceCaptureTracker::wantsSpaceGrab() const
{
    const bool wouldConsume = m_machine.isFnPressed || m_machine.phase == PushToTalkTriggerPhase::toggleActive;
    return wouldConsume && !m_spacePassedThrough;
}
