#pragma once

#include "platform/Workspace.h"

#include <QStringList>

class FakeApplication : public ApplicationHandle
{
public:
    FakeApplication(qint64 pid, std::optional<QString> name)
        : pid(pid)
        , name(std::move(name))
    {
    }

    qint64 processIdentifier() const override { return pid; }
    std::optional<QString> localizedName() const override { return name; }
    bool activate() override { return ++activationCount, activates; }
    bool isFrontmost() const override { return frontmost; }
    KeySynthesizer::PasteShortcut pasteShortcut() const override { return shortcut; }

    qint64 pid;
    std::optional<QString> name;
    bool activates = true;
    bool frontmost = false;
    KeySynthesizer::PasteShortcut shortcut = KeySynthesizer::PasteShortcut::controlV;
    int activationCount = 0;
};

class FakeWorkspace : public Workspace
{
public:
    ApplicationHandlePtr frontmostApplication() override { return frontmost; }
    bool openSettingsPane(const QString &anchor) override { return openedPanes.append(anchor), true; }

    ApplicationHandlePtr frontmost;
    QStringList openedPanes;
};
