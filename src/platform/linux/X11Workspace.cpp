#include "X11Workspace.h"

#include "DesktopApplicationNames.h"
#include "X11ApplicationHandle.h"
#include "X11WorkspaceConnection.h"

// Merge shim: the settings places are opened by SettingsPanes, written beside this file.
#if __has_include("platform/linux/SettingsPanes.h")
#include "platform/linux/SettingsPanes.h"
#define QUORLA_HAS_SETTINGS_PANES 1
#else
#define QUORLA_HAS_SETTINGS_PANES 0
#endif

X11Workspace::X11Workspace()
    : m_connection(X11WorkspaceConnection::open()), m_names(std::make_shared<DesktopApplicationNames>())
{
}

X11Workspace::~X11Workspace() = default;

ApplicationHandlePtr X11Workspace::frontmostApplication()
{
    if (!m_connection)
        return nullptr;
    const X11WorkspaceConnection::WindowId window = m_connection->activeWindow();
    if (!window)
        return nullptr;
    return std::make_shared<X11ApplicationHandle>(m_connection, window, m_names);
}

bool X11Workspace::openSettingsPane(const QString &anchor)
{
#if QUORLA_HAS_SETTINGS_PANES
    return openDesktopSettingsPane(anchor);
#else
    Q_UNUSED(anchor)
    return false;
#endif
}
