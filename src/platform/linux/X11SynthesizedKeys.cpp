#include "X11SynthesizedKeys.h"

#include <array>
#include <atomic>

namespace {

std::array<std::atomic<int>, 256> expected{};

} // namespace

void X11SynthesizedKeys::expect(std::uint8_t keycode)
{
    ++expected[keycode];
}

bool X11SynthesizedKeys::take(std::uint8_t keycode)
{
    int count = expected[keycode].load();
    while (count > 0) {
        if (expected[keycode].compare_exchange_weak(count, count - 1))
            return true;
    }
    return false;
}

void X11SynthesizedKeys::forget()
{
    for (auto &count : expected)
        count = 0;
}
