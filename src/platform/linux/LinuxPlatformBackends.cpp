#include "platform/PlatformBackends.h"

#include "platform/QtClipboard.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/LinuxDesktopProbe.h"
#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/QtAudioCapture.h"
#include "platform/linux/X11KeyboardHook.h"

PlatformBackends makePlatformBackends(const TriggerKey &trigger)
{
    PlatformBackends backends;
    backends.keyboardHook = std::make_shared<X11KeyboardHook>(trigger);
    backends.workspace = std::make_shared<X11Workspace>();
    backends.accessibility = std::make_shared<AtSpiAccessibility>();
    backends.audioCapture = makeAudioCapture();
    backends.inputSource = std::make_shared<XkbInputSourceProvider>();
    backends.credentialStore = makeCredentialStore();
    backends.keySynthesizer = std::make_shared<X11KeySynthesizer>();
    backends.clipboard = std::make_shared<QtClipboard>();
    return backends;
}

std::shared_ptr<CredentialStore> makeCredentialStore()
{
    return std::make_shared<SecretServiceCredentialStore>();
}

std::shared_ptr<DesktopProbe> makeDesktopProbe()
{
    return std::make_shared<LinuxDesktopProbe>();
}

std::shared_ptr<AudioCapture> makeAudioCapture()
{
    return std::make_shared<QtAudioCapture>();
}
