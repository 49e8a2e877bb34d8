#pragma once

#include "services/TextInsertionTarget.h"

#include <QCoro/QCoroTask>
#include <QString>

// Types a finished transcript into the target application.
class TextInserter
{
public:
    virtual ~TextInserter() = default;

    // Throws QuorlaError::accessibilityPermissionDenied or textInsertionFailed.
    virtual QCoro::Task<void> insert(QString text, TextInsertionTarget target, bool restoreClipboard,
                                     bool replaceTriggerSpace) = 0;
};
