#pragma once

#include "models/TextRange.h"

#include <QString>
#include <memory>
#include <optional>

// The focused text element of another application, as the accessibility interface
// shows it. Offsets are UTF-16 units; backends convert from their own.
class AccessibleElement
{
public:
    AccessibleElement() = default;
    AccessibleElement(const AccessibleElement &) = delete;
    AccessibleElement &operator=(const AccessibleElement &) = delete;
    virtual ~AccessibleElement() = default;

    // The whole text; absent when the element exposes none or the query fails.
    [[nodiscard]] virtual std::optional<QString> value() = 0;
    // The selection, or the caret as an empty range; absent when unknown.
    [[nodiscard]] virtual std::optional<TextRange> selectedRange() = 0;
    // Whether replaceText can work (the element is editable through the interface).
    [[nodiscard]] virtual bool isValueSettable() = 0;
    // Whether setSelection can work.
    [[nodiscard]] virtual bool isSelectionSettable() = 0;
    // Replaces the range with `text`, leaving the rest of the field, its formatting and its
    // undo history alone; false when the element refused, with the field as it was.
    virtual bool replaceText(TextRange range, const QString &text) = 0;
    // Selects the range (an empty range places the caret); false when refused.
    virtual bool setSelection(TextRange range) = 0;
    // True for terminal emulators, which paste with a different shortcut.
    [[nodiscard]] virtual bool isTerminal() = 0;
};
