#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// The keyboard input source the user has selected.
struct InputSourceInfo {
    QString identifier;
    QString inputModeIdentifier;
    QString localizedName;
    QStringList languages; // language tags as the platform lists them
};

class InputSourceProvider
{
public:
    virtual ~InputSourceProvider() = default;

    // Absent when no input source can be read.
    virtual std::optional<InputSourceInfo> currentInputSource() = 0;
    // Calls onChange on the main thread after every change of the selected source.
    virtual void startObservingChanges(std::function<void()> onChange) = 0;
};
