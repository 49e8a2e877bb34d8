#include "WaylandKeySynthesizers.h"

#include "WaylandConnection.h"

#include <QLoggingCategory>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include "fake-input-client-protocol.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"

Q_LOGGING_CATEGORY(lcWaylandKeys, "quorla.wayland.keys")

namespace {

// Fake input learned keys in its fourth version.
constexpr uint32_t fakeInputKeysVersion = 4;

uint32_t nowMs()
{
    using namespace std::chrono;
    return uint32_t(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

// The keymap text with its final NUL, as the protocol counts it; empty when xkbcommon fails.
std::string usKeymap(uint32_t *controlMask, uint32_t *shiftMask)
{
    std::string text;
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!context)
        return text;
    const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
    if (xkb_keymap *keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS)) {
        if (char *string = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1)) {
            text.assign(string, std::strlen(string) + 1);
            std::free(string);
        }
        *controlMask = 1u << xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_CTRL);
        *shiftMask = 1u << xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
        xkb_keymap_unref(keymap);
    }
    xkb_context_unref(context);
    return text;
}

// The modifiers and the key of each paste shortcut, as evdev codes.
struct PasteKeys {
    std::initializer_list<unsigned> modifiers;
    unsigned key;
};

PasteKeys pasteKeys(KeySynthesizer::PasteShortcut shortcut)
{
    static const std::initializer_list<unsigned> control{KEY_LEFTCTRL};
    static const std::initializer_list<unsigned> controlShift{KEY_LEFTCTRL, KEY_LEFTSHIFT};
    static const std::initializer_list<unsigned> shift{KEY_LEFTSHIFT};
    switch (shortcut) {
    case KeySynthesizer::PasteShortcut::controlShiftV:
        return {controlShift, KEY_V};
    case KeySynthesizer::PasteShortcut::shiftInsert:
        return {shift, KEY_INSERT};
    case KeySynthesizer::PasteShortcut::controlV:
        break;
    }
    return {control, KEY_V};
}

} // namespace

std::shared_ptr<VirtualKeyboardKeySynthesizer> VirtualKeyboardKeySynthesizer::create(
    std::shared_ptr<WaylandConnection> connection)
{
    if (!connection || !connection->seat() || !connection->offers(zwp_virtual_keyboard_manager_v1_interface.name))
        return nullptr;
    return std::shared_ptr<VirtualKeyboardKeySynthesizer>(new VirtualKeyboardKeySynthesizer(std::move(connection)));
}

VirtualKeyboardKeySynthesizer::VirtualKeyboardKeySynthesizer(std::shared_ptr<WaylandConnection> connection)
    : m_connection(std::move(connection))
{
}

VirtualKeyboardKeySynthesizer::~VirtualKeyboardKeySynthesizer()
{
    if (m_keyboard) {
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
        m_connection->flush();
    }
}

bool VirtualKeyboardKeySynthesizer::attach()
{
    if (m_keyboard)
        return !m_connection->isBroken();
    const std::string keymap = usKeymap(&m_controlMask, &m_shiftMask);
    if (keymap.empty()) {
        qCWarning(lcWaylandKeys) << "xkbcommon built no keymap";
        return false;
    }
    const int fd = memfd_create("quorla-keymap", MFD_CLOEXEC);
    if (fd < 0 || write(fd, keymap.data(), keymap.size()) != ssize_t(keymap.size())) {
        if (fd >= 0)
            close(fd);
        return false;
    }
    auto *manager = static_cast<zwp_virtual_keyboard_manager_v1 *>(
        m_connection->bind(&zwp_virtual_keyboard_manager_v1_interface, 1));
    if (!manager) {
        close(fd);
        return false;
    }
    m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, m_connection->seat());
    zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd, uint32_t(keymap.size()));
    close(fd); // the request carries its own copy
    // The manager has no destructor request: dropping our proxy is all there is.
    wl_proxy_destroy(reinterpret_cast<wl_proxy *>(manager));
    return m_connection->flush();
}

bool VirtualKeyboardKeySynthesizer::press(std::initializer_list<unsigned> modifiers, unsigned key)
{
    if (!attach())
        return false;
    uint32_t mask = 0;
    for (unsigned modifier : modifiers) {
        zwp_virtual_keyboard_v1_key(m_keyboard, nowMs(), modifier, WL_KEYBOARD_KEY_STATE_PRESSED);
        mask |= modifier == KEY_LEFTCTRL ? m_controlMask : m_shiftMask;
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, mask, 0, 0, 0);
    }
    zwp_virtual_keyboard_v1_key(m_keyboard, nowMs(), key, WL_KEYBOARD_KEY_STATE_PRESSED);
    zwp_virtual_keyboard_v1_key(m_keyboard, nowMs(), key, WL_KEYBOARD_KEY_STATE_RELEASED);
    for (auto it = std::rbegin(modifiers); it != std::rend(modifiers); ++it)
        zwp_virtual_keyboard_v1_key(m_keyboard, nowMs(), *it, WL_KEYBOARD_KEY_STATE_RELEASED);
    if (modifiers.size() > 0)
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, 0, 0, 0, 0);
    return m_connection->flush();
}

bool VirtualKeyboardKeySynthesizer::sendBackspace()
{
    return press({}, KEY_BACKSPACE);
}

bool VirtualKeyboardKeySynthesizer::sendPasteShortcut(PasteShortcut shortcut)
{
    const PasteKeys keys = pasteKeys(shortcut);
    return press(keys.modifiers, keys.key);
}

std::shared_ptr<KWinFakeInputKeySynthesizer> KWinFakeInputKeySynthesizer::create(
    std::shared_ptr<WaylandConnection> connection)
{
    if (!connection)
        return nullptr;
    auto *input = static_cast<org_kde_kwin_fake_input *>(
        connection->bind(&org_kde_kwin_fake_input_interface, fakeInputKeysVersion));
    if (!input)
        return nullptr;
    if (wl_proxy_get_version(reinterpret_cast<wl_proxy *>(input)) < fakeInputKeysVersion) {
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(input));
        return nullptr;
    }
    // KWin grants the interface by the desktop entry; the reason is shown where it asks.
    org_kde_kwin_fake_input_authenticate(input, "Quorla", "Paste dictated text into the focused application");
    connection->flush();
    return std::shared_ptr<KWinFakeInputKeySynthesizer>(new KWinFakeInputKeySynthesizer(std::move(connection), input));
}

KWinFakeInputKeySynthesizer::KWinFakeInputKeySynthesizer(std::shared_ptr<WaylandConnection> connection,
                                                         org_kde_kwin_fake_input *input)
    : m_connection(std::move(connection))
    , m_input(input)
{
}

KWinFakeInputKeySynthesizer::~KWinFakeInputKeySynthesizer()
{
    wl_proxy_destroy(reinterpret_cast<wl_proxy *>(m_input));
}

bool KWinFakeInputKeySynthesizer::press(std::initializer_list<unsigned> modifiers, unsigned key)
{
    for (unsigned modifier : modifiers)
        org_kde_kwin_fake_input_keyboard_key(m_input, modifier, WL_KEYBOARD_KEY_STATE_PRESSED);
    org_kde_kwin_fake_input_keyboard_key(m_input, key, WL_KEYBOARD_KEY_STATE_PRESSED);
    org_kde_kwin_fake_input_keyboard_key(m_input, key, WL_KEYBOARD_KEY_STATE_RELEASED);
    for (auto it = std::rbegin(modifiers); it != std::rend(modifiers); ++it)
        org_kde_kwin_fake_input_keyboard_key(m_input, *it, WL_KEYBOARD_KEY_STATE_RELEASED);
    return m_connection->flush();
}

bool KWinFakeInputKeySynthesizer::sendBackspace()
{
    return press({}, KEY_BACKSPACE);
}

bool KWinFakeInputKeySynthesizer::sendPasteShortcut(PasteShortcut shortcut)
{
    const PasteKeys keys = pasteKeys(shortcut);
    return press(keys.modifiers, keys.key);
}
