#pragma once

#include "platform/KeySynthesizer.h"

#include <QStringList>
#include <functional>

class FakeKeySynthesizer : public KeySynthesizer
{
public:
    void prepare(const std::function<void(bool)> &done) override { done(ready); }
    bool sendBackspace() override { return backspaceWorks && (sent.append(QStringLiteral("BackSpace")), true); }
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
    bool ready = true;
    bool backspaceWorks = true;
    bool pasteWorks = true;
    std::function<void()> onPaste; // the target reading the clipboard, say
};
