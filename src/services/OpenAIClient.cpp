#include "OpenAIClient.h"

#include "models/QuorlaError.h"

OpenAIClient::OpenAIClient(QNetworkAccessManager *network, QUrl baseURL)
    : m_network(network)
    , m_baseURL(std::move(baseURL))
{
}

QCoro::Task<QString> OpenAIClient::transcribeAudio(QString, QString, TranscriptionMode, std::optional<QString>,
                                                   std::optional<QString>)
{
    throw QuorlaError(QuorlaError::Kind::invalidAPIResponse);
    co_return QString();
}

QCoro::Task<QString> OpenAIClient::polishTranscript(QString transcript, QString, std::optional<QString>,
                                                    std::optional<QString>)
{
    co_return transcript;
}

QCoro::Task<QString> OpenAIClient::translateTranscript(QString transcript, QString, TranslationLanguage,
                                                       std::optional<InputLanguageHint>)
{
    co_return transcript;
}
