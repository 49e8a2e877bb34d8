#pragma once

#include "platform/InputSourceProvider.h"

#include <QJsonObject>
#include <QPointer>

class SwayIpcConnection;

// The active keyboard layout as sway reports it (get_inputs, then its input events), as
// an input source named and given languages by xkeyboard-config. sway names layouts only
// by their description, which the registry maps back. Nothing is known until sway's first
// reply; the change notice follows it.
class SwayInputSourceProvider : public InputSourceProvider
{
public:
    explicit SwayInputSourceProvider(const QString &socketPath);
    ~SwayInputSourceProvider() override;

    std::optional<InputSourceInfo> currentInputSource() override { return m_source; }
    void startObservingChanges(std::function<void()> onChange) override;

    // The source of one keyboard of get_inputs; absent for other devices and empty layouts.
    [[nodiscard]] static std::optional<InputSourceInfo> sourceOf(const QJsonObject &input);

private:
    void update(std::optional<InputSourceInfo> source);

    SwayIpcConnection *m_connection = nullptr;
    std::optional<InputSourceInfo> m_source;
    std::function<void()> m_onChange;
};
