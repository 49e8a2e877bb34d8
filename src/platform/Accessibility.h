#pragma once

// Whether Quorla may read and edit other applications' text fields.
class Accessibility
{
public:
    virtual ~Accessibility() = default;

    // True when the accessibility interface is reachable and enabled for us.
    [[nodiscard]] virtual bool isProcessTrusted() = 0;
    // Asks the desktop to grant access (a prompt, or switching the facility on);
    // returns whether access is granted now.
    virtual bool requestTrust() = 0;
};
