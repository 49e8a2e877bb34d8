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
        // Repeats never feed the machine and always reach the application.
        press.autoRepeat = true;
        return press;
    }
    press.swallowed = wantsSpaceGrab();
    m_spaceDown = true;
    m_machine.handle(PushToTalkTriggerInput::spaceDown(press.triggerFlag));
    return press;
}

void SpaceCaptureTracker::spaceUp()
{
    m_spaceDown = false;
    m_machine.handle(PushToTalkTriggerInput::spaceUp());
}

bool SpaceCaptureTracker::otherKeyDown()
{
    return !m_machine.handle(PushToTalkTriggerInput::otherKeyDown()).empty();
}

void SpaceCaptureTracker::reset()
{
    *this = {};
}

bool SpaceCaptureTracker::wantsSpaceGrab() const
{
    // While Space is down its repeats and its release belong to the application.
    return m_machine.wouldConsumeSpace() && !m_spaceDown;
}
