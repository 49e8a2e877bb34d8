#include "platform/PlatformBackends.h"

#include "platform/linux/PlaceholderBackends.h"
#include "platform/linux/X11KeyboardHook.h"
#include "stores/PreferencesStore.h"

PlatformBackends makePlatformBackends(PreferencesStore &preferences)
{
    PlatformBackends backends;
    backends.keyboardHook = std::make_shared<X11KeyboardHook>(
        TriggerKey::normalized(preferences.stringValue(TriggerKey::preferenceKey)));
    backends.workspace = std::make_shared<PlaceholderWorkspace>();
    backends.accessibility = std::make_shared<PlaceholderAccessibility>();
    backends.audioCapture = std::make_shared<PlaceholderAudioCapture>();
    backends.inputSource = std::make_shared<PlaceholderInputSourceProvider>();
    backends.credentialStore = makeCredentialStore();
    return backends;
}

std::shared_ptr<CredentialStore> makeCredentialStore()
{
    return std::make_shared<PlaceholderCredentialStore>();
}
