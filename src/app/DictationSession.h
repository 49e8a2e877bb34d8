#pragma once

#include "models/InputLanguageHint.h"
#include "services/TextInsertionTarget.h"

#include <QString>
#include <memory>
#include <optional>

class LiveTranscription;

// commandHold and commandToggle come from `quorla dictation start|toggle` (D-Bus), for
// desktops where Quorla cannot see the trigger key or for scripts and switch devices.
enum class DictationSource { manual,
                             fnHold,
                             fnToggle,
                             commandHold,
                             commandToggle };

inline bool isCommandSource(DictationSource source)
{
    return source == DictationSource::commandHold || source == DictationSource::commandToggle;
}

// The commands that start and end a command's recording, as status lines quote them.
inline QString commandToStart(DictationSource source)
{
    return source == DictationSource::commandToggle ? QStringLiteral("`quorla dictation toggle`")
                                                    : QStringLiteral("`quorla dictation start`");
}
inline QString commandToFinish(DictationSource source)
{
    return source == DictationSource::commandToggle ? QStringLiteral("`quorla dictation toggle`")
                                                    : QStringLiteral("`quorla dictation stop`");
}

// One dictation from its start to its transcript.
struct DictationSession {
    DictationSource source = DictationSource::manual;
    std::optional<TextInsertionTarget> insertionTarget;
    std::optional<InputLanguageHint> transcriptionLanguage;
    bool replaceTriggerSpace = false;
    QString apiKey;
    // Live mode: the speech streamed as it is recorded. Closes with the session's last copy.
    std::shared_ptr<LiveTranscription> live;
};

// What the insertion step did.
struct InsertionOutcome {
    enum class Kind { inserted,
                      insertionFailed,
                      notAttempted };

    Kind kind = Kind::notAttempted;
    QString applicationName; // empty for notAttempted
    // Failed with the transcript left on the clipboard by the paste route: pasting by hand works.
    bool leftOnClipboard = false;

    static InsertionOutcome inserted(QString name) { return {Kind::inserted, std::move(name)}; }
    static InsertionOutcome insertionFailed(QString name) { return {Kind::insertionFailed, std::move(name)}; }
    static InsertionOutcome notAttempted() { return {}; }

    friend bool operator==(const InsertionOutcome &, const InsertionOutcome &) = default;
};

// The target's name as status lines show it; an application without a name of its
// own (or one that has quit) is still "the target app".
inline QString statusApplicationName(const TextInsertionTarget &target)
{
    const auto name = target.application ? target.application->localizedName() : std::nullopt;
    return name && !name->isEmpty() ? *name : QStringLiteral("the target app");
}

// " in German" after a name in status lines; nothing when the language is unknown.
inline QString statusLanguagePart(const std::optional<InputLanguageHint> &language)
{
    return language ? QStringLiteral(" in ") + language->displayName : QString();
}
