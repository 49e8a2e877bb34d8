#include "platform/PlatformBackends.h"

#include "platform/CommandOnlyKeyboardHook.h"
#include "platform/DesktopSession.h"
#include "platform/QtClipboard.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/DesktopSessionProbe.h"
#include "platform/linux/LinuxDesktopProbe.h"
#include "platform/linux/PortalBackends.h"
#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/QtAudioCapture.h"
#include "platform/linux/KdeInputSourceProvider.h"
#include "platform/linux/SwayInputSourceProvider.h"
#include "platform/linux/SwayIpcConnection.h"
#include "platform/linux/SwayKeyboardHook.h"
#include "platform/linux/X11KeyboardHook.h"
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"

namespace {

std::shared_ptr<KeyboardHook> makeKeyboardHook(SessionBackends::Trigger source, const TriggerKey &trigger)
{
    switch (source) {
    case SessionBackends::Trigger::x11:
        return std::make_shared<X11KeyboardHook>(trigger);
    case SessionBackends::Trigger::sway:
        return std::make_shared<SwayKeyboardHook>(trigger, SwayIpcConnection::sessionSocketPath());
    // The portal answers over D-Bus, so the hook asks it itself and falls back when it
    // offers no global shortcuts: to Xwayland's windows, or to the command.
    case SessionBackends::Trigger::xwaylandOnly:
        return makePortalShortcutsHook(std::make_shared<X11KeyboardHook>(trigger));
    case SessionBackends::Trigger::globalShortcutsPortal:
    case SessionBackends::Trigger::commandOnly:
        break;
    }
    return makePortalShortcutsHook(std::make_shared<CommandOnlyKeyboardHook>(trigger));
}

// Sessions that tell nobody their keyboard layout: the input language gets no hint.
class SilentInputSourceProvider : public InputSourceProvider
{
public:
    std::optional<InputSourceInfo> currentInputSource() override { return std::nullopt; }
    void startObservingChanges(std::function<void()>) override {}
};

std::shared_ptr<InputSourceProvider> makeInputSource(SessionBackends::Layout source)
{
    switch (source) {
    case SessionBackends::Layout::xkb:
        return std::make_shared<XkbInputSourceProvider>();
    case SessionBackends::Layout::sway:
        return std::make_shared<SwayInputSourceProvider>(SwayIpcConnection::sessionSocketPath());
    case SessionBackends::Layout::kde:
        return std::make_shared<KdeInputSourceProvider>(QDBusConnection::sessionBus());
    case SessionBackends::Layout::none:
        break;
    }
    return std::make_shared<SilentInputSourceProvider>();
}

// `fallback`: the route the session offers without the portals, for when they refuse.
std::shared_ptr<KeySynthesizer> makeKeySynthesizer(SessionBackends::Keys source, SessionBackends::Keys fallback,
                                                   const std::shared_ptr<WaylandConnection> &wayland)
{
    std::shared_ptr<KeySynthesizer> keys;
    switch (source) {
    case SessionBackends::Keys::virtualKeyboard:
        keys = VirtualKeyboardKeySynthesizer::create(wayland);
        break;
    case SessionBackends::Keys::kdeFakeInput:
        keys = KWinFakeInputKeySynthesizer::create(wayland);
        break;
    // The portal's keys reach native and Xwayland windows alike, once the user consents.
    case SessionBackends::Keys::remoteDesktopPortal:
        return makePortalKeySynthesizer(fallback == source || fallback == SessionBackends::Keys::none
                                            ? nullptr
                                            : makeKeySynthesizer(fallback, fallback, wayland));
    case SessionBackends::Keys::none:
        return makePortalKeySynthesizer(nullptr);
    // XTest reaches the Xwayland windows, the only ones anything here can type into.
    case SessionBackends::Keys::x11:
    case SessionBackends::Keys::xwaylandOnly:
        break;
    }
    return keys ? keys : std::make_shared<X11KeySynthesizer>();
}

// Qt's clipboard is refused on Wayland but to the focused window: where the compositor
// offers nothing better, it serves Quorla's own window (History's Copy) and says no to
// the rest rather than pretend.
std::shared_ptr<Clipboard> makeClipboard(SessionBackends::Clipboard source,
                                         const std::shared_ptr<WaylandConnection> &wayland)
{
    if (source == SessionBackends::Clipboard::dataControl) {
        if (auto clipboard = WaylandClipboard::create(wayland))
            return clipboard;
    }
    return std::make_shared<QtClipboard>(source == SessionBackends::Clipboard::qt ? QtClipboard::Writer::anyone
                                                                                  : QtClipboard::Writer::focusedWindow);
}

} // namespace

PlatformBackends makePlatformBackends(const TriggerKey &trigger)
{
    // Only the display servers are asked here: they answer on local sockets at once. The
    // portals answer over D-Bus, so a portal backend asks them itself, asynchronously: the
    // RemoteDesktop portal ranks as if it answered, and what the session offers without it
    // serves when it doesn't.
    const DesktopSession servers = DesktopSessionProbe::displayServers();
    DesktopSession withKeysPortal = servers;
    withKeysPortal.remoteDesktopPortal = 1;
    const SessionBackends chosen = chosenBackends(withKeysPortal);
    PlatformBackends backends;
    backends.keyboardHook = makeKeyboardHook(chosen.trigger, trigger);
    backends.workspace = std::make_shared<X11Workspace>();
    if (chosen.workspace == SessionBackends::Workspace::accessibility)
        backends.workspace = std::make_shared<AtSpiWorkspace>(backends.workspace);
    backends.accessibility = std::make_shared<AtSpiAccessibility>();
    backends.audioCapture = makeAudioCapture();
    backends.inputSource = makeInputSource(chosen.layout);
    backends.credentialStore = makeCredentialStore();
    // One connection of Quorla's own for the compositor's keys and clipboard.
    const bool needsWayland = chosen.keys == SessionBackends::Keys::virtualKeyboard
                           || chosen.keys == SessionBackends::Keys::kdeFakeInput
                           || chosen.clipboard == SessionBackends::Clipboard::dataControl;
    const std::shared_ptr<WaylandConnection> wayland = needsWayland ? WaylandConnection::open() : nullptr;
    backends.keySynthesizer = makeKeySynthesizer(chosen.keys, chosenBackends(servers).keys, wayland);
    backends.clipboard = makeClipboard(chosen.clipboard, wayland);
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
