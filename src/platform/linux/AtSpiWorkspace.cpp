#include "AtSpiWorkspace.h"

#include "AtSpiAccessibility.h"
#include "DesktopApplicationNames.h"
#include "SettingsPanes.h"

namespace {

class AtSpiApplicationHandle : public ApplicationHandle
{
public:
    AtSpiApplicationHandle(qint64 pid, std::optional<QString> name)
        : m_pid(pid)
        , m_name(std::move(name))
    {
    }

    qint64 processIdentifier() const override { return m_pid; }
    std::optional<QString> localizedName() const override { return m_name; }
    // The compositor offers no way to raise a window, and the focus has not moved.
    bool activate() override { return true; }
    // Taken as in front: with nothing to bring it back, waiting for it would buy nothing.
    bool isFrontmost() const override { return true; }

private:
    qint64 m_pid;
    std::optional<QString> m_name;
};

} // namespace

AtSpiWorkspace::AtSpiWorkspace(std::shared_ptr<Workspace> xwayland)
    : m_xwayland(std::move(xwayland))
    , m_names(std::make_shared<DesktopApplicationNames>())
{
}

AtSpiWorkspace::~AtSpiWorkspace() = default;

ApplicationHandlePtr AtSpiWorkspace::frontmostApplication()
{
    if (const auto active = AtSpiAccessibility::activeApplication()) {
        std::optional<QString> name = m_names->nameForWindowClass(active->name, active->name);
        if (!name && !active->name.isEmpty())
            name = active->name;
        return std::make_shared<AtSpiApplicationHandle>(active->processIdentifier, std::move(name));
    }
    return m_xwayland ? m_xwayland->frontmostApplication() : nullptr;
}

bool AtSpiWorkspace::openSettingsPane(const QString &anchor)
{
    return openDesktopSettingsPane(anchor);
}
