#pragma once

#include "models/TriggerKey.h"

#include <memory>

class Accessibility;
class AudioCapture;
class Clipboard;
class CredentialStore;
class DesktopProbe;
class InputSourceProvider;
class KeySynthesizer;
class KeyboardHook;
class Workspace;

// One implementation of every platform seam, chosen once at start-up.
struct PlatformBackends {
    std::shared_ptr<KeyboardHook> keyboardHook;
    std::shared_ptr<Workspace> workspace;
    std::shared_ptr<Accessibility> accessibility;
    std::shared_ptr<AudioCapture> audioCapture;
    std::shared_ptr<InputSourceProvider> inputSource;
    std::shared_ptr<CredentialStore> credentialStore;
    std::shared_ptr<KeySynthesizer> keySynthesizer;
    std::shared_ptr<Clipboard> clipboard;
};

// The backends of the platform this build runs on, the keyboard hook watching `trigger`.
PlatformBackends makePlatformBackends(const TriggerKey &trigger);

// Only the credential store, for the command line (no display needed).
std::shared_ptr<CredentialStore> makeCredentialStore();

// For `quorla doctor`: the desktop's answers, and a microphone of its own.
std::shared_ptr<DesktopProbe> makeDesktopProbe();
std::shared_ptr<AudioCapture> makeAudioCapture();
