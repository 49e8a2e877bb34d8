#pragma once

#include "services/TextInserter.h"

#include <chrono>
#include <memory>

#include "platform/KeySynthesizer.h"

class Accessibility;
class AccessibleElement;
class Clipboard;

// How long each step of an insertion waits for the target application to react.
struct TextInsertionTimings {
    // After bringing the target to the front, before touching its text; not spent when the
    // target never lost the focus.
    std::chrono::milliseconds activationSettle{120};
    // Between the Backspace that removes the trigger space and the paste shortcut.
    std::chrono::milliseconds backspaceSettle{40};
    // Before putting the old clipboard back: the target reads the clipboard after the keys.
    std::chrono::milliseconds clipboardRestoreDelay{180};
    // Synthesized keys combine with modifiers the user still holds: wait, but not forever.
    std::chrono::milliseconds modifierPollInterval{10};
    std::chrono::milliseconds modifierReleaseLimit{1500};
};

// Types the transcript through the accessibility interface, or pastes it.
class TextInsertionService : public TextInserter
{
public:
    TextInsertionService(std::shared_ptr<Accessibility> accessibility, std::shared_ptr<KeySynthesizer> keys,
                         std::shared_ptr<Clipboard> clipboard, TextInsertionTimings timings = {});

    QCoro::Task<void> insert(QString text, TextInsertionTarget target, bool restoreClipboard,
                             bool replaceTriggerSpace) override;

private:
    QCoro::Task<void> paste(QString text, ApplicationHandlePtr application, bool restoreClipboard,
                            bool deleteTriggerSpace, KeySynthesizer::PasteShortcut shortcut);
    QCoro::Task<void> waitForModifiersReleased();

    std::shared_ptr<Accessibility> m_accessibility;
    std::shared_ptr<KeySynthesizer> m_keys;
    std::shared_ptr<Clipboard> m_clipboard;
    TextInsertionTimings m_timings;
};
