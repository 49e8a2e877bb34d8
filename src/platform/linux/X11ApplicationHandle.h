#pragma once

#include "platform/ApplicationHandle.h"

#include <QString>

class DesktopApplicationNames;
class X11WorkspaceConnection;

// A top-level X11 window standing for its application.
class X11ApplicationHandle : public ApplicationHandle
{
public:
    X11ApplicationHandle(std::shared_ptr<X11WorkspaceConnection> connection, unsigned long window,
                         std::shared_ptr<DesktopApplicationNames> names);

    qint64 processIdentifier() const override;
    std::optional<QString> localizedName() const override;
    bool activate() override;
    bool isFrontmost() const override;
    KeySynthesizer::PasteShortcut pasteShortcut() const override;

    [[nodiscard]] unsigned long window() const { return m_window; }

private:
    std::shared_ptr<X11WorkspaceConnection> m_connection;
    unsigned long m_window;
    std::shared_ptr<DesktopApplicationNames> m_names;
    // Read once: the name must survive the window, for the message that says it is gone.
    QString m_instance;
    QString m_className;
};

// How a window of class (instance, className) pastes from the keyboard: terminals are known
// by their class, as few of them show an accessible terminal role.
[[nodiscard]] KeySynthesizer::PasteShortcut pasteShortcutForWindowClass(const QString &instance,
                                                                        const QString &className);
