#pragma once

#include "platform/DesktopProbe.h"

// The desktop as Quorla meets it on Linux: X11 for keys, AT-SPI for text, PulseAudio
// (or PipeWire's PulseAudio server) for the microphone.
class LinuxDesktopProbe : public DesktopProbe
{
public:
    Session session() override;
    TriggerAccess triggerAccess(const TriggerKey &key) override;
    AccessibilityBus accessibilityBus() override;
    bool canSynthesizeKeys() override;
    AudioServer audioServer() override;
};
