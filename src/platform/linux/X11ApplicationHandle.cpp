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

bool X11ApplicationHandle::isTerminalEmulator() const
{
    // Terminals that expose no accessible terminal role still need Ctrl+Shift+V.
    static const QStringList terminals = {
        QStringLiteral("xterm"),
        QStringLiteral("uxterm"),
        QStringLiteral("urxvt"),
        QStringLiteral("rxvt"),
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
    return terminals.contains(m_className, Qt::CaseInsensitive) || terminals.contains(m_instance, Qt::CaseInsensitive);
}
