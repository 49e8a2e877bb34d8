#pragma once

#include "platform/KeySynthesizer.h"

#include <QString>
#include <memory>
#include <optional>

// A running application that can receive the transcript.
class ApplicationHandle
{
public:
    virtual ~ApplicationHandle() = default;

    // 0 when the application is gone or never told us its process id.
    [[nodiscard]] virtual qint64 processIdentifier() const = 0;
    // The user-facing name; absent when the application has none.
    [[nodiscard]] virtual std::optional<QString> localizedName() const = 0;
    // Brings the application to the front; false when that was refused or it is gone.
    virtual bool activate() = 0;
    // Whether it holds the focus now, so bringing it to the front would change nothing.
    [[nodiscard]] virtual bool isFrontmost() const { return false; }
    // The keys that paste here: terminals turn Ctrl+V into a control character.
    [[nodiscard]] virtual KeySynthesizer::PasteShortcut pasteShortcut() const
    {
        return KeySynthesizer::PasteShortcut::controlV;
    }
};

using ApplicationHandlePtr = std::shared_ptr<ApplicationHandle>;
