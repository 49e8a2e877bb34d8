#pragma once

#include "platform/AccessibleElement.h"

typedef struct _AtspiAccessible AtspiAccessible;

// A focused AT-SPI object, through its Text and EditableText interfaces.
class AtSpiAccessibleElement : public AccessibleElement
{
public:
    // How the toolkit counts text offsets: AT-SPI says characters, Qt sends UTF-16 units.
    enum class OffsetUnit { codePoint,
                            utf16 };

    // Takes over one reference to `accessible`.
    AtSpiAccessibleElement(AtspiAccessible *accessible, OffsetUnit unit);
    ~AtSpiAccessibleElement() override;

    std::optional<QString> value() override;
    std::optional<TextRange> selectedRange() override;
    bool isValueSettable() override;
    bool isSelectionSettable() override;
    bool replaceText(TextRange range, const QString &text) override;
    bool setSelection(TextRange range) override;
    bool isTerminal() override;

private:
    [[nodiscard]] qsizetype toUtf16(QStringView value, qsizetype offset) const;
    [[nodiscard]] qsizetype fromUtf16(QStringView value, qsizetype offset) const;

    // The field's text, read once: long documents make every read costly. The element lives
    // for one insertion, and keeps this in step with its own edits.
    const std::optional<QString> &text();

    AtspiAccessible *m_accessible;
    OffsetUnit m_unit;
    std::optional<std::optional<QString>> m_text;
};
