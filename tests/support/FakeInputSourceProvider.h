#pragma once

#include "platform/InputSourceProvider.h"

class FakeInputSourceProvider : public InputSourceProvider
{
public:
    std::optional<InputSourceInfo> currentInputSource() override { return source; }
    void startObservingChanges(std::function<void()> onChange) override
    {
        ++observerCount;
        m_onChange = std::move(onChange);
    }
    void change(std::optional<InputSourceInfo> next)
    {
        source = std::move(next);
        if (m_onChange)
            m_onChange();
    }

    std::optional<InputSourceInfo> source;
    int observerCount = 0;

private:
    std::function<void()> m_onChange;
};
