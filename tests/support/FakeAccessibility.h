#pragma once

#include "platform/Accessibility.h"

class FakeAccessibility : public Accessibility
{
public:
    bool isProcessTrusted() override { return trusted; }
    bool requestTrust() override
    {
        ++requestCount;
        trusted = trusted || grantsOnRequest;
        return trusted;
    }

    bool trusted = true;
    bool grantsOnRequest = false;
    int requestCount = 0;
};
