#pragma once

#include "models/QuorlaError.h"
#include "models/TriggerKey.h"
#include "platform/KeyboardHook.h"
#include "support/PlatformWords.h"

// A session that lets no program watch keys: the trigger is a command the user binds in the
// desktop's own shortcuts, and install() says so.
class CommandOnlyKeyboardHook : public KeyboardHook
{
public:
    explicit CommandOnlyKeyboardHook(TriggerKey trigger)
        : m_trigger(std::move(trigger))
    {
    }

    InstallOutcome install(Events) override
    {
        throw QuorlaError::hotkeyRegistrationFailed(PlatformWords::current().triggerCommandOnlyStatus.arg(m_trigger.displayName));
    }
    void uninstall() override {}
    [[nodiscard]] bool isInstalled() const override { return false; }
    void setSpaceCaptureWanted(bool) override {}
    [[nodiscard]] QString triggerDisplayName() const override { return m_trigger.displayName; }
    InstallOutcome setTriggerKey(const TriggerKey &key) override
    {
        m_trigger = key;
        return {};
    }

private:
    TriggerKey m_trigger;
};
