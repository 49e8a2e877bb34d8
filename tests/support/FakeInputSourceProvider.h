#pragma once

#include "platform/InputSourceProvider.h"

class FakeInputSourceProvider : public InputSourceProvider
{
public:
    std::optional<InputSourceInfo> currentInputSource() override { return source; }
    void startObservingChanges(std::function<void()>) override {}

    std::optional<InputSourceInfo> source;
};
