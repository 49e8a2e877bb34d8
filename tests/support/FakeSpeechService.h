#pragma once

#include "services/SpeechService.h"

#include <QStringList>
#include <functional>

// Answers each pass with a scripted reply (or error) and records the calls.
// Replies are returned as copies: QCoro's co_return moves from a non-const lvalue.
class FakeSpeechService : public SpeechService
{
public:
    struct TranscribeCall {
        QString filePath;
        QString apiKey;
        TranscriptionMode mode;
        std::optional<QString> languageCode;
        std::optional<QString> prompt;
    };

    QCoro::Task<QString> transcribeAudio(QString filePath, QString apiKey, TranscriptionMode mode,
                                         std::optional<QString> languageCode, std::optional<QString> prompt) override
    {
        transcribeCalls.append({filePath, apiKey, mode, languageCode, prompt});
        if (transcribeReply)
            co_return co_await transcribeReply();
        co_return QString(transcript);
    }
    QCoro::Task<QString> polishTranscript(QString text, QString, std::optional<QString> dictionaryGuidance,
                                          std::optional<QString> customPrompt) override
    {
        polishCalls.append(text);
        lastPolishGuidance = dictionaryGuidance;
        lastPolishPrompt = customPrompt;
        co_return QString(polished.isEmpty() ? text : polished);
    }
    QCoro::Task<QString> translateTranscript(QString text, QString, TranslationLanguage targetLanguage,
                                             std::optional<InputLanguageHint> sourceLanguage) override
    {
        translateCalls.append(text);
        lastTarget = targetLanguage;
        lastSource = sourceLanguage;
        co_return QString(translated.isEmpty() ? text : translated);
    }

    QString transcript = QStringLiteral("hello world");
    QString polished;
    QString translated;
    // When set, transcribeAudio awaits it (to fail or to stall).
    std::function<QCoro::Task<QString>()> transcribeReply;
    QList<TranscribeCall> transcribeCalls;
    QStringList polishCalls;
    QStringList translateCalls;
    std::optional<QString> lastPolishGuidance;
    std::optional<QString> lastPolishPrompt;
    std::optional<TranslationLanguage> lastTarget;
    std::optional<InputLanguageHint> lastSource;
};
