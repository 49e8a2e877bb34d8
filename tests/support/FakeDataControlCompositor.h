#pragma once

#include <memory>

class WaylandConnection;

// A compositor whose seat's selection is set and read through ext-data-control-v1 only, for
// the protocol no compositor here offers. It runs on a thread of its own.
class FakeDataControlCompositor
{
public:
    FakeDataControlCompositor();
    FakeDataControlCompositor(const FakeDataControlCompositor &) = delete;
    FakeDataControlCompositor &operator=(const FakeDataControlCompositor &) = delete;
    ~FakeDataControlCompositor();

    // A client connection to it; two are there, then null.
    std::shared_ptr<WaylandConnection> connect();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
