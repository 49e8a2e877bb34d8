#include "TextReplacement.h"

std::optional<TextRange> replacementRange(QStringView string, TextRange selected, bool replaceTriggerSpace)
{
    if (selected.location < 0 || selected.length < 0)
        return std::nullopt;
    if (string.size() < selected.location + selected.length)
        return std::nullopt;
    if (!replaceTriggerSpace || selected.location == 0)
        return selected;
    if (string.at(selected.location - 1) == u' ')
        return TextRange{selected.location - 1, selected.length + 1};
    return selected;
}

bool hasTriggerSpaceBeforeSelection(QStringView value, TextRange selected)
{
    return selected.location >= 1 && value.size() >= selected.location
        && value.at(selected.location - 1) == u' ';
}
