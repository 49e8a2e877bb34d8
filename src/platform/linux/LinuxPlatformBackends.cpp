#include "platform/PlatformBackends.h"

#include "platform/linux/PlaceholderBackends.h"
#include "platform/linux/QtAudioCapture.h"

PlatformBackends makePlatformBackends(PreferencesStore &preferences)
{
    Q_UNUSED(preferences)
    PlatformBackends backends;
    backends.keyboardHook = std::make_shared<PlaceholderKeyboardHook>();
    backends.workspace = std::make_shared<PlaceholderWorkspace>();
    backends.accessibility = std::make_shared<PlaceholderAccessibility>();
    backends.audioCapture = std::make_shared<QtAudioCapture>();
    backends.inputSource = std::make_shared<PlaceholderInputSourceProvider>();
    backends.credentialStore = makeCredentialStore();
    return backends;
}

std::shared_ptr<CredentialStore> makeCredentialStore()
{
    return std::make_shared<PlaceholderCredentialStore>();
}
