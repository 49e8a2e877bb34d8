#pragma once

#include "platform/KeySynthesizer.h"

#include <QStringList>
#include <functional>

class FakeKeySynthesizer : public KeySynthesizer
{
public:
    bool sendBackspace() override
    {
        if (!backspaceWorks)
            return false;
        sent.append(QStringLiteral("BackSpace"));
        return true;
    }
    bool sendPasteShortcut(PasteShortcut shortcut) override
    {
        if (!pasteWorks)
            return false;
        sent.append(shortcut == PasteShortcut::controlShiftV ? QStringLiteral("Ctrl+Shift+V")
                                                             : QStringLiteral("Ctrl+V"));
        if (onPaste)
            onPaste();
        return true;
    }
    bool isAnyModifierPressed() override
    {
        ++modifierQueries;
        if (modifiersHeldForQueries > 0) {
            --modifiersHeldForQueries;
            return true;
        }
        return false;
    }

    QStringList sent;
    bool backspaceWorks = true;
    bool pasteWorks = true;
    int modifiersHeldForQueries = 0; // answers "held" this many times, then "released"
    int modifierQueries = 0;
    std::function<void()> onPaste; // the target reading the clipboard, say
};
