#pragma once

#include "models/QuorlaError.h"
#include "services/TextInserter.h"

#include <QStringList>
#include <functional>
#include <optional>

class FakeTextInserter : public TextInserter
{
public:
    struct Call {
        QString text;
        bool replaceTriggerSpace;
    };

    QCoro::Task<void> insert(QString text, TextInsertionTarget, bool, bool replaceTriggerSpace) override
    {
        calls.append({text, replaceTriggerSpace});
        if (onInsert)
            onInsert(text);
        if (failure)
            throw *failure;
        co_return;
    }

    QList<Call> calls;
    std::optional<QuorlaError> failure;
    std::function<void(const QString &)> onInsert; // what the insertion leaves behind
};
