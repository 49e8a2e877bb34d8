#pragma once

#include "services/TextInserter.h"

#include <memory>

class Accessibility;

// Types the transcript through the accessibility interface, or pastes it.
class TextInsertionService : public TextInserter
{
public:
    explicit TextInsertionService(std::shared_ptr<Accessibility> accessibility);

    QCoro::Task<void> insert(QString text, TextInsertionTarget target, bool restoreClipboard,
                             bool replaceTriggerSpace) override;

private:
    std::shared_ptr<Accessibility> m_accessibility;
};
