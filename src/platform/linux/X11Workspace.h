#pragma once

#include "platform/Workspace.h"

class DesktopApplicationNames;
class X11WorkspaceConnection;

// The X11 desktop: the active window from EWMH, settings through the desktop's own application.
class X11Workspace : public Workspace
{
public:
    X11Workspace();
    ~X11Workspace() override;

    ApplicationHandlePtr frontmostApplication() override;
    bool openSettingsPane(const QString &anchor) override;

private:
    std::shared_ptr<X11WorkspaceConnection> m_connection; // null without a display
    std::shared_ptr<DesktopApplicationNames> m_names;
};
