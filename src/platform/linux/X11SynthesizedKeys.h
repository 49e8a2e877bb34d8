#pragma once

#include <cstdint>

// The key events Quorla itself sends through XTest, so the trigger hook can tell them from
// keys other programs send through the same XTEST devices (remote-desktop servers, the
// user's key scripts), which count as the user's. Safe from any thread.
namespace X11SynthesizedKeys {

// Called just before sending one event (a press or a release) of keycode.
void expect(std::uint8_t keycode);
// True, once per expected event, when an XTEST event of keycode is Quorla's own.
bool take(std::uint8_t keycode);
// Forgets what was expected: nobody watched those events arrive.
void forget();

} // namespace X11SynthesizedKeys
