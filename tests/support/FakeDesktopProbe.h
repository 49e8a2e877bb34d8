#pragma once

#include "platform/DesktopProbe.h"

// A desktop where everything dictation needs is there, until a test takes some away.
class FakeDesktopProbe : public DesktopProbe
{
public:
    Session session() override { return sessionAnswer; }
    TriggerAccess triggerAccess(const TriggerKey &) override { return trigger; }
    AccessibilityBus accessibilityBus() override { return bus; }
    bool canSynthesizeKeys() override { return synthesizesKeys; }
    AudioServer audioServer() override { return audio; }

    Session sessionAnswer{SessionType::x11, QStringLiteral(":0"), {}};
    TriggerAccess trigger = TriggerAccess::watchable;
    AccessibilityBus bus{true, true};
    bool synthesizesKeys = true;
    AudioServer audio{true, QStringLiteral("pulseaudio 16.1"), QStringLiteral("Microphone")};
};
