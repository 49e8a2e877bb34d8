#pragma once

#include "services/SpeechService.h"

#include <QUrl>

class QNetworkAccessManager;

// The one HTTP client of the OpenAI API, with the user's own key.
class OpenAIClient : public SpeechService
{
public:
    OpenAIClient(QNetworkAccessManager *network, QUrl baseURL);

    QCoro::Task<QString> transcribeAudio(QString filePath, QString apiKey, TranscriptionMode mode,
                                         std::optional<QString> languageCode,
                                         std::optional<QString> prompt) override;
    QCoro::Task<QString> polishTranscript(QString transcript, QString apiKey,
                                          std::optional<QString> dictionaryGuidance,
                                          std::optional<QString> customPrompt) override;
    QCoro::Task<QString> translateTranscript(QString transcript, QString apiKey, TranslationLanguage targetLanguage,
                                             std::optional<InputLanguageHint> sourceLanguage) override;

private:
    QNetworkAccessManager *m_network;
    QUrl m_baseURL;
};
