#pragma once

#include "ApplicationHandle.h"

#include <QString>

// The desktop around Quorla: which application is in front, and its settings places.
class Workspace
{
public:
    virtual ~Workspace() = default;

    // The application whose window is active; null when none can be told.
    virtual ApplicationHandlePtr frontmostApplication() = 0;
    // Opens the desktop's settings place for a privacy anchor ("Privacy_Microphone",
    // "Privacy_ListenEvent", "Privacy_Accessibility"); false when the desktop has none.
    virtual bool openSettingsPane(const QString &anchor) = 0;
};
