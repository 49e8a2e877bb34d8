#include "X11Workspace.h"

#include "DesktopApplicationNames.h"
#include "SettingsPanes.h"
#include "X11ApplicationHandle.h"
#include "X11WorkspaceConnection.h"

X11Workspace::X11Workspace()
    : m_connection(X11WorkspaceConnection::open())
    , m_names(std::make_shared<DesktopApplicationNames>())
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
    return openDesktopSettingsPane(anchor);
}
