#pragma once

#include "platform/Accessibility.h"

#include <QStringList>

// A text field as the accessibility interface would show it; tests arrange and inspect it.
struct FakeTextField {
    std::optional<QString> value;
    std::optional<TextRange> selection;
    bool valueSettable = true;
    bool selectionSettable = true;
    bool acceptsValue = true;
    bool terminal = false;
    QStringList edits; // "replace:<location>,<length>:<text>" and "selection:<location>,<length>", in order
};

class FakeAccessibleElement : public AccessibleElement
{
public:
    explicit FakeAccessibleElement(std::shared_ptr<FakeTextField> field)
        : m_field(std::move(field))
    {
    }

    std::optional<QString> value() override { return m_field->value; }
    std::optional<TextRange> selectedRange() override { return m_field->selection; }
    bool isValueSettable() override { return m_field->valueSettable; }
    bool isSelectionSettable() override { return m_field->selectionSettable; }
    bool replaceText(TextRange range, const QString &text) override
    {
        if (!m_field->acceptsValue)
            return false;
        m_field->value->replace(range.location, range.length, text);
        m_field->edits.append(QStringLiteral("replace:%1,%2:").arg(range.location).arg(range.length) + text);
        return true;
    }
    bool setSelection(TextRange range) override
    {
        m_field->selection = range;
        m_field->edits.append(QStringLiteral("selection:%1,%2").arg(range.location).arg(range.length));
        return true;
    }
    bool isTerminal() override { return m_field->terminal; }

private:
    std::shared_ptr<FakeTextField> m_field;
};

class FakeAccessibility : public Accessibility
{
public:
    QCoro::Task<bool> isProcessTrusted() override { co_return trusted; }
    QCoro::Task<bool> requestTrust() override { co_return trusted = trusted || grantsOnRequest; }
    std::unique_ptr<AccessibleElement> focusedElement(qint64 processIdentifier) override
    {
        queriedProcesses.append(processIdentifier);
        if (!focused)
            return nullptr;
        return std::make_unique<FakeAccessibleElement>(focused);
    }

    bool trusted = true;
    bool grantsOnRequest = false;
    std::shared_ptr<FakeTextField> focused; // null: no focused element
    QList<qint64> queriedProcesses;
};
