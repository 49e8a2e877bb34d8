#pragma once

#include "models/InputLanguageHint.h"
#include "models/TranscriptionMode.h"
#include "models/TranslationLanguage.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <optional>

// The speech-to-text and chat passes of a dictation. Errors are thrown as
// QuorlaError (service replies) or PlatformError (transport, file, decoding).
class SpeechService
{
public:
    virtual ~SpeechService() = default;

    virtual QCoro::Task<QString> transcribeAudio(QString filePath, QString apiKey, TranscriptionMode mode,
                                                 std::optional<QString> languageCode,
                                                 std::optional<QString> prompt) = 0;
    virtual QCoro::Task<QString> polishTranscript(QString transcript, QString apiKey,
                                                  std::optional<QString> dictionaryGuidance,
                                                  std::optional<QString> customPrompt) = 0;
    virtual QCoro::Task<QString> translateTranscript(QString transcript, QString apiKey,
                                                     TranslationLanguage targetLanguage,
                                                     std::optional<InputLanguageHint> sourceLanguage) = 0;
};
