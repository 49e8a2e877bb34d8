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
    bool isAnyModifierPressed() override { return false; }

    QStringList sent;
    bool backspaceWorks = true;
    bool pasteWorks = true;
    std::function<void()> onPaste; // the target reading the clipboard, say
};
