#include "platform/PlatformBackends.h"

#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/LinuxDesktopProbe.h"
#include "platform/linux/PortalBackends.h"
#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/QtAudioCapture.h"
#include "platform/linux/X11KeyboardHook.h"

#include <QStringList>
#include <algorithm>

namespace {

// Until the session probe decides: a Wayland session of a desktop whose portal offers
// global shortcuts (KDE, GNOME 48+, Hyprland) or a remote desktop keyboard (KDE, GNOME).
bool isWaylandDesktop(std::initializer_list<QLatin1String> desktops)
{
    if (!qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return false;
    const QStringList current = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    return std::any_of(desktops.begin(), desktops.end(),
                       [&](QLatin1String desktop) { return current.contains(desktop, Qt::CaseInsensitive); });
}

} // namespace

PlatformBackends makePlatformBackends(const TriggerKey &trigger)
{
    PlatformBackends backends;
    backends.keyboardHook = isWaylandDesktop({QLatin1String("KDE"), QLatin1String("GNOME"), QLatin1String("Hyprland")})
                              ? makePortalShortcutsHook()
                              : std::make_shared<X11KeyboardHook>(trigger);
    backends.workspace = std::make_shared<X11Workspace>();
    backends.accessibility = std::make_shared<AtSpiAccessibility>();
    backends.audioCapture = makeAudioCapture();
    backends.inputSource = std::make_shared<XkbInputSourceProvider>();
    backends.credentialStore = makeCredentialStore();
    backends.keySynthesizer = isWaylandDesktop({QLatin1String("KDE"), QLatin1String("GNOME")})
                                ? makePortalKeySynthesizer()
                                : std::make_shared<X11KeySynthesizer>();
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
