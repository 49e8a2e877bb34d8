#pragma once

#include "models/QuorlaError.h"
#include "models/TriggerKey.h"
#include "platform/KeyboardHook.h"

#include <optional>

// Records what the monitor asks of the keyboard and lets a test press keys.
class FakeKeyboardHook : public KeyboardHook
{
public:
    InstallOutcome install(Events events) override
    {
        if (installFailure)
            throw *installFailure;
        m_events = std::move(events);
        m_installed = true;
        return {installNotice};
    }
    void uninstall() override { m_installed = false; }
    bool isInstalled() const override { return m_installed; }
    void setSpaceCaptureWanted(bool wanted) override { spaceCaptureWanted = wanted; }
    QString triggerDisplayName() const override { return triggerName; }
    QString toggleDisplayName() const override { return toggleName; }
    InstallOutcome setTriggerKey(const TriggerKey &key) override
    {
        triggerName = key.displayName;
        triggerKeyId = key.id;
        if (triggerKeyFailure) {
            m_installed = false;
            throw *triggerKeyFailure;
        }
        return {m_installed ? installNotice : std::nullopt};
    }

    void trigger(bool down) { m_events.triggerChanged(down); }
    bool spaceDown(bool autoRepeat = false, bool triggerFlag = false) { return m_events.spaceDown(autoRepeat, triggerFlag); }
    bool spaceUp() { return m_events.spaceUp(); }
    void toggle() { m_events.toggleRequested(); }
    void changeRoute(std::exception_ptr failure, std::optional<QString> notice) { m_events.routeChanged(failure, notice); }
    void otherKey() { m_events.otherKeyDown(); }
    void rename() { m_events.namesChanged(); }

    QString triggerName = QStringLiteral("Fn");
    QString toggleName; // empty: trigger + Space
    QString triggerKeyId;
    std::optional<QuorlaError> installFailure;
    std::optional<QuorlaError> triggerKeyFailure;
    std::optional<QString> installNotice;
    bool spaceCaptureWanted = false;

private:
    Events m_events;
    bool m_installed = false;
};
