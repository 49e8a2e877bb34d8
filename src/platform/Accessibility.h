#pragma once

#include "platform/AccessibleElement.h"

#include <QCoro/QCoroTask>
#include <QtGlobal>
#include <memory>

// Whether Quorla may read and edit other applications' text fields, and the way in.
class Accessibility
{
public:
    virtual ~Accessibility() = default;

    // True when the accessibility interface is reachable and enabled for us; false too
    // when the desktop does not answer within a few seconds. Answers on the event loop.
    [[nodiscard]] virtual QCoro::Task<bool> isProcessTrusted() = 0;
    // Asks the desktop to grant access (a prompt, or switching the facility on);
    // returns whether access is granted now.
    virtual QCoro::Task<bool> requestTrust() = 0;
    // The element with keyboard focus in the application with this process id; null
    // when the application is not reachable, has no focused element, or the search fails.
    [[nodiscard]] virtual std::unique_ptr<AccessibleElement> focusedElement(qint64 processIdentifier) = 0;
};
