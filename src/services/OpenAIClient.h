#pragma once

#include "services/SpeechService.h"

#include <QByteArray>
#include <QJsonObject>
#include <QUrl>
#include <chrono>
#include <functional>

class QNetworkAccessManager;
class QNetworkRequest;
struct HttpReply;

// The one HTTP client of the OpenAI API, with the user's own key. Stateless between
// calls: every call builds its request afresh on the shared network manager.
class OpenAIClient : public SpeechService
{
public:
    // The base address is asked for at every request, so a changed setting takes
    // effect with the next dictation.
    using BaseURLSource = std::function<QUrl()>;
    OpenAIClient(QNetworkAccessManager *network, BaseURLSource baseURL,
                 std::chrono::milliseconds transferTimeout = std::chrono::seconds(60));
    OpenAIClient(QNetworkAccessManager *network, const QUrl &baseURL,
                 std::chrono::milliseconds transferTimeout = std::chrono::seconds(60));

    [[nodiscard]] const QString &polishModel() const { return m_polishModel; }
    [[nodiscard]] const QString &translationModel() const { return m_translationModel; }

    QCoro::Task<QString> transcribeAudio(QString filePath, QString apiKey, TranscriptionMode mode,
                                         std::optional<QString> languageCode,
                                         std::optional<QString> prompt) override;
    QCoro::Task<QString> polishTranscript(QString transcript, QString apiKey,
                                          std::optional<QString> dictionaryGuidance,
                                          std::optional<QString> customPrompt) override;
    QCoro::Task<QString> translateTranscript(QString transcript, QString apiKey, TranslationLanguage targetLanguage,
                                             std::optional<InputLanguageHint> sourceLanguage) override;

    // The developer messages of the two chat passes.
    static QString polishInstructions(const std::optional<QString> &dictionaryGuidance,
                                      const std::optional<QString> &customPrompt);
    static QString translationInstructions(const TranslationLanguage &targetLanguage,
                                           const std::optional<InputLanguageHint> &sourceLanguage);

    // The JSON body of a chat pass: the model and two messages, never a temperature.
    static QByteArray chatCompletionBody(const QString &model, const QString &instructions,
                                         const QString &transcript);

private:
    QNetworkRequest apiRequest(const QString &path, const QString &apiKey) const;
    QCoro::Task<QString> completeChat(QString model, QString instructions, QString transcript, QString apiKey);

    QNetworkAccessManager *m_network;
    BaseURLSource m_baseURL;
    std::chrono::milliseconds m_transferTimeout;
    QString m_polishModel = QStringLiteral("gpt-5.4-nano");
    QString m_translationModel = QStringLiteral("gpt-5.4-nano");
};
