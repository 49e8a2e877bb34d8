#pragma once

#include "services/SpeechService.h"

#include <QStringList>
#include <functional>

// Answers each pass with a scripted reply (or error) and logs every request as one
// line: "transcribe KEY MODE LANGUAGE [prompt]", "polish 'TEXT' GUIDANCE PROMPT",
// "translate 'TEXT' TARGET from SOURCE NAME"; "-" stands for absent.
// Replies are returned as copies: QCoro's co_return moves from a non-const lvalue.
class FakeSpeechService : public SpeechService
{
public:
    QCoro::Task<QString> transcribeAudio(QString, QString key, TranscriptionMode mode, std::optional<QString> language,
                                         std::optional<QString> prompt) override
    {
        requests.append(QStringList{"transcribe", key, rawValue(mode), language.value_or("-")}.join(' ')
                        + (prompt ? " [prompt]" : ""));
        if (transcribeReply)
            co_return co_await transcribeReply();
        co_return QString(transcript);
    }
    QCoro::Task<QString> polishTranscript(QString text, QString, std::optional<QString> guidance,
                                          std::optional<QString> prompt) override
    {
        requests.append(QStringList{"polish", '\'' + text + '\'', guidance.value_or("-"), prompt.value_or("-")}.join(' '));
        co_return QString(polished.isEmpty() ? text : polished);
    }
    QCoro::Task<QString> translateTranscript(QString text, QString, TranslationLanguage target,
                                             std::optional<InputLanguageHint> source) override
    {
        requests.append(QStringList{"translate", '\'' + text + '\'', target.code, "from",
                                    source ? source->code + ' ' + source->displayName : "-"}
                            .join(' '));
        co_return QString(translated.isEmpty() ? text : translated);
    }

    QString transcript = QStringLiteral("hello world");
    QString polished, translated;
    // When set, transcribeAudio awaits it (to fail or to stall).
    std::function<QCoro::Task<QString>()> transcribeReply;
    QStringList requests;
};
