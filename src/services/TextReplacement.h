#pragma once

#include "models/TextRange.h"

#include <QStringView>
#include <optional>

// The stretch of `string` the transcript replaces: the selection, widened by one unit
// to the left when the trigger space sits just before it. None when the selection
// does not fit the string. Everything counts UTF-16 units.
[[nodiscard]] std::optional<TextRange> replacementRange(QStringView string, TextRange selected,
                                                        bool replaceTriggerSpace);

// Whether the unit just before the selection is the Space a toggle gesture may have typed.
[[nodiscard]] bool hasTriggerSpaceBeforeSelection(QStringView value, TextRange selected);
