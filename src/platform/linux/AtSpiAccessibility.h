#pragma once

#include "platform/Accessibility.h"

// Accessibility over AT-SPI2: "trusted" means the accessibility bus is up and enabled.
class AtSpiAccessibility : public Accessibility
{
public:
    QCoro::Task<bool> isProcessTrusted() override;
    // Switches accessibility on for the session, as screen readers do. Applications that
    // started while it was off may only join after a restart.
    QCoro::Task<bool> requestTrust() override;
    std::unique_ptr<AccessibleElement> focusedElement(qint64 processIdentifier) override;
};
