#include "DictationPipeline.h"

#include "models/QuorlaError.h"
#include "models/TranscriptionPrompt.h"
#include "services/FollowUpPhrases.h"
#include "services/LiveTranscription.h"
#include "services/SpeechService.h"
#include "services/TranslationLanguageCatalog.h"
#include "support/PlatformError.h"

#include <QLoggingCategory>
#include <exception>

Q_LOGGING_CATEGORY(lcDictation, "quorla.dictation", QtWarningMsg)

namespace {

const char *stepName(DictationStep step)
{
    switch (step) {
    case DictationStep::transcribing:
    case DictationStep::uploadingAfterLiveFailure:
        return "transcription";
    case DictationStep::polishing:
        return "polish";
    case DictationStep::translating:
        break;
    }
    return "translation";
}

// Which step failed and how, without the message: a service's message may quote the key.
void logFailure(DictationStep step, const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const QuorlaError &error) {
        qCWarning(lcDictation) << stepName(step) << "failed: service error kind" << int(error.kind());
    } catch (const PlatformError &error) {
        qCWarning(lcDictation) << stepName(step) << "failed: platform error domain" << int(error.domain())
                               << "code" << error.code();
    } catch (...) {
        qCWarning(lcDictation) << stepName(step) << "failed";
    }
}

} // namespace

DictationPipeline::DictationPipeline(std::shared_ptr<SpeechService> speech)
    : m_speech(std::move(speech))
{
}

QString DictationPipeline::cleanedTranscript(const QString &reply)
{
    QString cleaned = normalizedWithoutFollowUpPhrases(reply.trimmed());
    if (cleaned.isEmpty())
        throw QuorlaError(QuorlaError::Kind::emptyTranscription);
    return cleaned;
}

QCoro::Task<QString> DictationPipeline::run(DictationRequest request, StepObserver onStep) const
{
    // Held for the whole run, whatever happens to the caller meanwhile.
    const std::shared_ptr<SpeechService> speech = m_speech;
    const auto announce = [&onStep](DictationStep step) {
        if (onStep)
            onStep(step);
    };
    // Arguments of each request are named values: GCC 12 corrupts the heap when a
    // conditional operator makes a temporary inside a co_await'ed call's arguments.
    const std::optional<QString> languageCode =
        request.language ? std::optional<QString>(request.language->code) : std::nullopt;
    const std::optional<QString> prompt = transcriptionPrompt(request.dictionaryGuidance);

    DictationStep step = DictationStep::transcribing;
    QString transcript;
    std::exception_ptr failure;
    try {
        step = DictationStep::transcribing;
        announce(step);
        qCInfo(lcDictation) << "transcribing, language" << languageCode.value_or(QStringLiteral("unknown"))
                            << "dictionary prompt" << prompt.has_value();
        QString reply;
        bool upload = !request.live;
        if (request.live) {
            // A broken stream only decides the next step: a handler may not co_await.
            try {
                reply = co_await request.live->finish();
            } catch (const LiveTranscriptionFailure &) {
                upload = true;
            }
        }
        if (upload && request.live) {
            step = DictationStep::uploadingAfterLiveFailure;
            announce(step);
        }
        if (upload)
            reply = co_await speech->transcribeAudio(request.recordingPath, request.apiKey, request.mode,
                                                     languageCode, prompt);
        transcript = cleanedTranscript(reply);
        qCInfo(lcDictation) << "transcribed," << transcript.size() << "characters";

        if (request.polish) {
            step = DictationStep::polishing;
            announce(step);
            reply = co_await speech->polishTranscript(transcript, request.apiKey, request.dictionaryGuidance,
                                                      request.polishPrompt);
            transcript = cleanedTranscript(reply);
            qCInfo(lcDictation) << "polished," << transcript.size() << "characters";
        }

        if (TranslationLanguageCatalog::shouldTranslateTranscript(request.translationTarget, request.language)) {
            step = DictationStep::translating;
            announce(step);
            reply = co_await speech->translateTranscript(transcript, request.apiKey, *request.translationTarget,
                                                         request.language);
            transcript = cleanedTranscript(reply);
            qCInfo(lcDictation) << "translated to" << request.translationTarget->code << "," << transcript.size()
                                << "characters";
        } else if (request.translationTarget) {
            qCInfo(lcDictation) << "translation skipped: the speech is already in" << request.translationTarget->code;
        }
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        logFailure(step, failure);
        std::rethrow_exception(failure);
    }
    co_return transcript;
}
