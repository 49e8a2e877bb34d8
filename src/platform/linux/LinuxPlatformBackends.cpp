#include "platform/PlatformBackends.h"

#include "platform/QtClipboard.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/LinuxDesktopProbe.h"
#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/QtAudioCapture.h"
#include "platform/linux/X11KeyboardHook.h"
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"

namespace {

// The first key route the compositor offers; null when it offers none.
std::shared_ptr<KeySynthesizer> makeWaylandKeySynthesizer(const std::shared_ptr<WaylandConnection> &connection)
{
    if (auto keyboard = VirtualKeyboardKeySynthesizer::create(connection))
        return keyboard;
    return KWinFakeInputKeySynthesizer::create(connection);
}

// A Wayland session: Qt's clipboard is refused there and XTest reaches only Xwayland.
void useWaylandBackends(PlatformBackends &backends)
{
    const std::shared_ptr<WaylandConnection> connection = WaylandConnection::open();
    if (!connection)
        return;
    if (auto clipboard = WaylandClipboard::create(connection))
        backends.clipboard = clipboard;
    if (auto keys = makeWaylandKeySynthesizer(connection))
        backends.keySynthesizer = keys;
    backends.workspace = std::make_shared<AtSpiWorkspace>(backends.workspace);
}

} // namespace

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
    useWaylandBackends(backends);
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
