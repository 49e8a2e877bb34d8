#pragma once

#include "platform/Accessibility.h"

#include <QString>
#include <optional>

// Accessibility over AT-SPI2: "trusted" means the accessibility bus is up and enabled.
class AtSpiAccessibility : public Accessibility
{
public:
    QCoro::Task<bool> isProcessTrusted() override;
    // Switches accessibility on for the session, as screen readers do. Applications that
    // started while it was off may only join after a restart.
    QCoro::Task<bool> requestTrust() override;
    std::unique_ptr<AccessibleElement> focusedElement(qint64 processIdentifier) override;

    struct ActiveApplication {
        qint64 processIdentifier;
        QString name; // the toolkit's application name
    };
    // The application with the active window, other than Quorla; none when no accessible
    // application says it has one.
    static std::optional<ActiveApplication> activeApplication();
};
