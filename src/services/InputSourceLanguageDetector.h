#pragma once

#include "models/InputLanguageHint.h"

#include <functional>
#include <memory>
#include <optional>

class InputSourceProvider;

// Derives the dictation language from the selected keyboard input source.
class InputSourceLanguageDetector
{
public:
    explicit InputSourceLanguageDetector(std::shared_ptr<InputSourceProvider> provider);

    [[nodiscard]] std::optional<InputLanguageHint> currentLanguageHint() const;
    // onChange runs on the main thread after every change of the selected source.
    void startObservingChanges(std::function<void()> onChange);

private:
    std::shared_ptr<InputSourceProvider> m_provider;
};
