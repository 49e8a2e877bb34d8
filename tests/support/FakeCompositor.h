#pragma once

#include <QStringList>

#include <memory>

class WaylandConnection;

// A compositor for the protocols no compositor here offers: a seat whose selection is set and
// read through ext-data-control-v1, and KWin's fake input. It runs on a thread of its own.
class FakeCompositor
{
public:
    FakeCompositor();
    FakeCompositor(const FakeCompositor &) = delete;
    FakeCompositor &operator=(const FakeCompositor &) = delete;
    ~FakeCompositor();

    // A client connection to it; two are there, then null.
    std::shared_ptr<WaylandConnection> connect();
    // What came through fake input: "authenticated", "+KEY" pressed, "-KEY" released (evdev codes).
    [[nodiscard]] QStringList fakeInput() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
