#pragma once

#include "platform/KeySynthesizer.h"

#include <QStringList>
#include <functional>

class FakeKeySynthesizer : public KeySynthesizer
{
public:
    bool sendBackspace() override { return backspaceWorks && (sent.append(QStringLiteral("BackSpace")), true); }
    bool sendPasteShortcut(PasteShortcut shortcut) override
    {
        if (!pasteWorks)
            return false;
        static const QStringList names{QStringLiteral("Ctrl+V"), QStringLiteral("Ctrl+Shift+V"),
                                       QStringLiteral("Shift+Insert")};
        sent.append(names.at(int(shortcut)));
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
