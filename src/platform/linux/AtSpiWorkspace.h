#pragma once

#include "platform/Workspace.h"

#include <memory>

class DesktopApplicationNames;

// A Wayland session's desktop: no client may ask the compositor which window is active, so
// the application is the one AT-SPI says holds the active window; X11 applications under
// Xwayland are found by `xwayland` when AT-SPI knows nothing. Bringing an application back
// is left out: nothing moves the focus while the user dictates.
class AtSpiWorkspace : public Workspace
{
public:
    // `xwayland` may be null.
    explicit AtSpiWorkspace(std::shared_ptr<Workspace> xwayland);
    ~AtSpiWorkspace() override;

    ApplicationHandlePtr frontmostApplication() override;
    bool openSettingsPane(const QString &anchor) override;

private:
    std::shared_ptr<Workspace> m_xwayland;
    std::shared_ptr<DesktopApplicationNames> m_names;
};
