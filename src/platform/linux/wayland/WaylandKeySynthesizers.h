#pragma once

#include "platform/KeySynthesizer.h"

#include <memory>

class WaylandConnection;
struct org_kde_kwin_fake_input;
struct zwp_virtual_keyboard_v1;

// Keys from a virtual keyboard on the seat (wlroots compositors: sway, Hyprland, river).
// The keyboard carries a US keymap of its own: the paste shortcut is the same key on every
// layout, and what is pasted comes from the clipboard.
class VirtualKeyboardKeySynthesizer : public KeySynthesizer
{
public:
    // Null when the compositor offers no virtual keyboards or no seat.
    static std::shared_ptr<VirtualKeyboardKeySynthesizer> create(std::shared_ptr<WaylandConnection> connection);
    ~VirtualKeyboardKeySynthesizer() override;

    // Puts the keyboard on the seat now rather than at the first key; false when refused.
    bool attach();
    bool sendBackspace() override;
    bool sendPasteShortcut(PasteShortcut shortcut) override;
    // The compositor tells no client about other keyboards: nothing to wait for.
    bool isAnyModifierPressed() override { return false; }

private:
    explicit VirtualKeyboardKeySynthesizer(std::shared_ptr<WaylandConnection> connection);
    bool press(std::initializer_list<unsigned> modifiers, unsigned key);

    std::shared_ptr<WaylandConnection> m_connection;
    zwp_virtual_keyboard_v1 *m_keyboard = nullptr;
    unsigned m_controlMask = 0;
    unsigned m_shiftMask = 0;
};

// Keys through KWin's fake input, granted to Quorla by its desktop entry
// (X-KDE-Wayland-Interfaces). KWin applies its own keymap and modifiers.
class KWinFakeInputKeySynthesizer : public KeySynthesizer
{
public:
    // Null when the compositor offers no fake input able to send keys.
    static std::shared_ptr<KWinFakeInputKeySynthesizer> create(std::shared_ptr<WaylandConnection> connection);
    ~KWinFakeInputKeySynthesizer() override;

    bool sendBackspace() override;
    bool sendPasteShortcut(PasteShortcut shortcut) override;
    bool isAnyModifierPressed() override { return false; }

private:
    KWinFakeInputKeySynthesizer(std::shared_ptr<WaylandConnection> connection, org_kde_kwin_fake_input *input);
    bool press(std::initializer_list<unsigned> modifiers, unsigned key);

    std::shared_ptr<WaylandConnection> m_connection;
    org_kde_kwin_fake_input *m_input;
};
