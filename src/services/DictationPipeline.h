#pragma once

#include "models/InputLanguageHint.h"
#include "models/TranscriptionMode.h"
#include "models/TranslationLanguage.h"

#include <QCoro/QCoroTask>
#include <QLoggingCategory>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

class LiveTranscription;
class SpeechService;

// "quorla.dictation": one line per step of a dictation, never its text or key.
Q_DECLARE_LOGGING_CATEGORY(lcDictation)

// What one dictation needs once its recording is finished, taken when it is sent:
// later changes to the settings or the dictionary do not reach a dictation in flight.
struct DictationRequest {
    QString recordingPath;
    QString apiKey;
    TranscriptionMode mode = TranscriptionMode::fast;
    // The speech language: the transcription's language and the translation's source hint.
    std::optional<InputLanguageHint> language;
    std::optional<QString> dictionaryGuidance;
    bool polish = false;
    std::optional<QString> polishPrompt;
    // Absent when no translation is wanted; the pipeline still skips one into the speech language.
    std::optional<TranslationLanguage> translationTarget;
    // In live mode, the speech streamed while it was recorded; its transcript replaces
    // the upload, which remains the way out when the stream broke.
    std::shared_ptr<LiveTranscription> live;
};

enum class DictationStep { transcribing,
                           uploadingAfterLiveFailure,
                           polishing,
                           translating };

// The steps after recording, shared by the window and the command line: transcribe
// (with the dictionary prompt), clean up, polish, translate. Each step is announced
// before it starts. Throws QuorlaError::emptyTranscription when nothing is left of a
// reply, and whatever the speech service throws.
class DictationPipeline
{
public:
    using StepObserver = std::function<void(DictationStep)>;

    explicit DictationPipeline(std::shared_ptr<SpeechService> speech);

    [[nodiscard]] QCoro::Task<QString> run(DictationRequest request, StepObserver onStep = {}) const;

    // A reply as the user gets it: trimmed, without trailing follow-up offers; throws
    // emptyTranscription when that leaves nothing.
    static QString cleanedTranscript(const QString &reply);

private:
    std::shared_ptr<SpeechService> m_speech;
};
