#include "X11ApplicationHandle.h"

#include "DesktopApplicationNames.h"
#include "X11WorkspaceConnection.h"

#include <QStringList>

X11ApplicationHandle::X11ApplicationHandle(std::shared_ptr<X11WorkspaceConnection> connection, unsigned long window,
                                           std::shared_ptr<DesktopApplicationNames> names)
    : m_connection(std::move(connection))
    , m_window(window)
    , m_names(std::move(names))
{
    if (const auto windowClass = m_connection->windowClass(m_window)) {
        m_instance = QString::fromStdString(windowClass->instance);
        m_className = QString::fromStdString(windowClass->className);
    }
}

qint64 X11ApplicationHandle::processIdentifier() const
{
    return m_connection->processId(m_window);
}

std::optional<QString> X11ApplicationHandle::localizedName() const
{
    if (m_instance.isEmpty() && m_className.isEmpty())
        return std::nullopt;
    if (auto name = m_names->nameForWindowClass(m_instance, m_className))
        return name;
    return m_className.isEmpty() ? m_instance : m_className;
}

bool X11ApplicationHandle::activate()
{
    return m_connection->activate(m_window);
}

bool X11ApplicationHandle::isFrontmost() const
{
    return m_connection->activeWindow() == m_window;
}

KeySynthesizer::PasteShortcut X11ApplicationHandle::pasteShortcut() const
{
    const KeySynthesizer::PasteShortcut shortcut = pasteShortcutForWindowClass(m_instance, m_className);
    // A terminal we do not know by name may still say what it is in its desktop entry.
    if (shortcut == KeySynthesizer::PasteShortcut::controlV && m_names->isTerminalEmulator(m_instance, m_className))
        return KeySynthesizer::PasteShortcut::controlShiftV;
    return shortcut;
}

KeySynthesizer::PasteShortcut pasteShortcutForWindowClass(const QString &instance, const QString &className)
{
    // Shift+Insert is their only default paste key; Ctrl+Shift+V types ^V there.
    static const QStringList xtermStyle = {
        QStringLiteral("xterm"),
        QStringLiteral("uxterm"),
        QStringLiteral("urxvt"),
        QStringLiteral("rxvt"),
    };
    static const QStringList terminals = {
        QStringLiteral("gnome-terminal"),
        QStringLiteral("gnome-terminal-server"),
        QStringLiteral("konsole"),
        QStringLiteral("xfce4-terminal"),
        QStringLiteral("mate-terminal"),
        QStringLiteral("lxterminal"),
        QStringLiteral("qterminal"),
        QStringLiteral("terminator"),
        QStringLiteral("tilix"),
        QStringLiteral("alacritty"),
        QStringLiteral("kitty"),
        QStringLiteral("st-256color"),
        QStringLiteral("sakura"),
        QStringLiteral("termite"),
        QStringLiteral("wezterm"),
        QStringLiteral("org.wezfurlong.wezterm"),
        QStringLiteral("kgx"),
        QStringLiteral("eterm"),
        QStringLiteral("yakuake"),
        QStringLiteral("guake"),
        QStringLiteral("tilda"),
        QStringLiteral("cool-retro-term"),
        QStringLiteral("terminology"),
    };
    const auto among = [&](const QStringList &names) {
        return names.contains(className, Qt::CaseInsensitive) || names.contains(instance, Qt::CaseInsensitive);
    };
    if (among(xtermStyle))
        return KeySynthesizer::PasteShortcut::shiftInsert;
    return among(terminals) ? KeySynthesizer::PasteShortcut::controlShiftV : KeySynthesizer::PasteShortcut::controlV;
}
