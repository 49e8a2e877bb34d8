#pragma once

#include <memory>

class KeyboardHook;
class KeySynthesizer;

// The desktop portal routes on the session bus: the trigger and toggle as GlobalShortcuts
// (`fallback` serving where the portal offers none), and keys through a RemoteDesktop
// keyboard session (`fallback`, when not null, serving where the portal refuses one).
std::shared_ptr<KeyboardHook> makePortalShortcutsHook(std::shared_ptr<KeyboardHook> fallback);
std::shared_ptr<KeySynthesizer> makePortalKeySynthesizer(std::shared_ptr<KeySynthesizer> fallback);
