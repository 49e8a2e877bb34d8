#include "OpenAIClient.h"

#include "models/QuorlaError.h"
#include "services/FollowUpPhrases.h"
#include "services/HttpExchange.h"
#include "services/MultipartFormDataBuilder.h"
#include "services/OpenAIReplyValidation.h"
#include "services/ServiceAddress.h"
#include "support/PlatformError.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QNetworkRequest>

Q_LOGGING_CATEGORY(lcSpeech, "quorla.speech", QtWarningMsg)

namespace {

// One line per request: which pass, the HTTP status (or that the reply was not HTTP).
void logReply(const char *pass, const HttpReply &reply)
{
    if (reply.statusCode)
        qCInfo(lcSpeech) << pass << "request: HTTP" << *reply.statusCode << "," << reply.body.size() << "bytes";
    else
        qCWarning(lcSpeech) << pass << "request: the reply was not HTTP";
}

PlatformError decodingError()
{
    return PlatformError(PlatformError::Domain::decoding,
                         QStringLiteral("The data couldn't be read because it isn't in the correct format."));
}

QJsonObject decodedObject(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        throw decodingError();
    return document.object();
}

QString decodedTranscriptionText(const QByteArray &body)
{
    const QJsonValue text = decodedObject(body).value(u"text");
    if (!text.isString())
        throw decodingError();
    return text.toString();
}

// The first choice's content; absent when there is no choice or no content.
std::optional<QString> decodedChatContent(const QByteArray &body)
{
    const QJsonValue choices = decodedObject(body).value(u"choices");
    if (!choices.isArray())
        throw decodingError();
    std::optional<QString> first;
    bool isFirst = true;
    for (const QJsonValue choice : choices.toArray()) {
        const QJsonValue message = choice.toObject().value(u"message");
        if (!message.isObject())
            throw decodingError();
        const QJsonValue content = message.toObject().value(u"content");
        if (!content.isString() && !content.isNull() && !content.isUndefined())
            throw decodingError();
        if (isFirst && content.isString())
            first = content.toString();
        isFirst = false;
    }
    return first;
}

QByteArray bearer(const QString &apiKey)
{
    return "Bearer " + apiKey.toUtf8();
}

} // namespace

OpenAIClient::OpenAIClient(QNetworkAccessManager *network, BaseURLSource baseURL,
                           std::chrono::milliseconds transferTimeout)
    : m_network(network)
    , m_baseURL(std::move(baseURL))
    , m_transferTimeout(transferTimeout)
{
}

OpenAIClient::OpenAIClient(QNetworkAccessManager *network, const QUrl &baseURL,
                           std::chrono::milliseconds transferTimeout)
    : OpenAIClient(network, BaseURLSource([baseURL] { return baseURL; }), transferTimeout)
{
}

QNetworkRequest OpenAIClient::apiRequest(const QString &path, const QString &apiKey) const
{
    // The key never leaves this machine unencrypted.
    const QUrl baseURL = m_baseURL();
    if (const auto refusal = ServiceAddress::refusalForAPIKey(baseURL))
        throw QuorlaError::apiFailure(*refusal);
    QNetworkRequest request(ServiceAddress::endpointURL(baseURL, path));
    request.setTransferTimeout(int(m_transferTimeout.count()));
    // A redirect must not carry the key to another address.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setRawHeader("Authorization", bearer(apiKey));
    return request;
}

QCoro::Task<QString> OpenAIClient::transcribeAudio(QString filePath, QString apiKey, TranscriptionMode mode,
                                                   std::optional<QString> languageCode,
                                                   std::optional<QString> prompt)
{
    QNetworkRequest request = apiRequest(QStringLiteral("/v1/audio/transcriptions"), apiKey);
    MultipartFormDataBuilder form(MultipartFormDataBuilder::freshBoundary());
    request.setRawHeader("Content-Type", "multipart/form-data; boundary=" + form.boundary().toUtf8());

    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        throw PlatformError(PlatformError::Domain::file,
                            QStringLiteral("The file \"%1\" couldn't be opened: %2.")
                                .arg(QFileInfo(filePath).fileName(), file.errorString()));
    const QByteArray audio = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw PlatformError(PlatformError::Domain::file,
                            QStringLiteral("The file \"%1\" couldn't be read: %2.")
                                .arg(QFileInfo(filePath).fileName(), file.errorString()));
    file.close();

    form.addField(QStringLiteral("model"), transcriptionModelName(mode));
    form.addField(QStringLiteral("response_format"), QStringLiteral("json"));
    if (languageCode && !languageCode->isEmpty())
        form.addField(QStringLiteral("language"), *languageCode);
    if (prompt && !prompt->trimmed().isEmpty())
        form.addField(QStringLiteral("prompt"), *prompt);
    form.addFile(QStringLiteral("file"), QFileInfo(filePath).fileName(), "audio/m4a", audio);
    form.finish();

    const QByteArray verb("POST");
    const HttpReply reply = co_await sendHttpRequest(m_network, request, verb, form.body());
    logReply("transcription", reply);
    validateOpenAIReply(reply);
    const QString text = decodedTranscriptionText(reply.body).trimmed();
    if (text.isEmpty()) {
        qCWarning(lcSpeech) << "transcription reply holds no text";
        throw QuorlaError(QuorlaError::Kind::emptyTranscription);
    }
    // No second emptiness test: a reply that was only a follow-up offer yields "".
    co_return normalizedWithoutFollowUpPhrases(text);
}

QCoro::Task<QString> OpenAIClient::polishTranscript(QString transcript, QString apiKey,
                                                    std::optional<QString> dictionaryGuidance,
                                                    std::optional<QString> customPrompt)
{
    const QString instructions = polishInstructions(dictionaryGuidance, customPrompt);
    const QString polished = co_await completeChat(m_polishModel, instructions, transcript, apiKey);
    co_return polished;
}

QCoro::Task<QString> OpenAIClient::translateTranscript(QString transcript, QString apiKey,
                                                       TranslationLanguage targetLanguage,
                                                       std::optional<InputLanguageHint> sourceLanguage)
{
    const QString instructions = translationInstructions(targetLanguage, sourceLanguage);
    const QString translated = co_await completeChat(m_translationModel, instructions, transcript, apiKey);
    co_return translated;
}

QCoro::Task<QString> OpenAIClient::completeChat(QString model, QString instructions, QString transcript,
                                                QString apiKey)
{
    QNetworkRequest request = apiRequest(QStringLiteral("/v1/chat/completions"), apiKey);
    request.setRawHeader("Content-Type", "application/json");
    const QByteArray body = chatCompletionBody(model, instructions, transcript);
    const QByteArray verb("POST");
    const HttpReply reply = co_await sendHttpRequest(m_network, request, verb, body);
    logReply(qPrintable(model), reply);
    validateOpenAIReply(reply);
    if (const auto content = decodedChatContent(reply.body)) {
        const QString trimmed = content->trimmed();
        if (!trimmed.isEmpty()) {
            const QString cleaned = normalizedWithoutFollowUpPhrases(trimmed);
            if (!cleaned.isEmpty())
                co_return cleaned;
        }
    }
    // An empty answer never fails a pass: the input goes on, cleaned.
    qCInfo(lcSpeech) << "chat reply empty or only a follow-up offer: keeping the input";
    co_return normalizedWithoutFollowUpPhrases(transcript.trimmed());
}

QByteArray OpenAIClient::chatCompletionBody(const QString &model, const QString &instructions,
                                            const QString &transcript)
{
    const QJsonObject body{
        {QStringLiteral("model"), model},
        {QStringLiteral("messages"),
         QJsonArray{QJsonObject{{QStringLiteral("role"), QStringLiteral("developer")},
                                {QStringLiteral("content"), instructions}},
                    QJsonObject{{QStringLiteral("role"), QStringLiteral("user")},
                                {QStringLiteral("content"), transcript}}}},
    };
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

QString OpenAIClient::polishInstructions(const std::optional<QString> &dictionaryGuidance,
                                         const std::optional<QString> &customPrompt)
{
    QStringList sections{QStringLiteral("Rewrite dictated speech into clean, natural text.\n"
                                        "Remove filler words, false starts, and duplicates.\n"
                                        "Preserve meaning, names, and tone.\n"
                                        "Do not add facts or invent details.\n"
                                        "Return only the cleaned transcript text.\n"
                                        "Do not add titles, explanations, quotes, notes, or follow-up questions.")};
    const QString prompt = customPrompt.value_or(QString()).trimmed();
    if (!prompt.isEmpty())
        sections.append(QStringLiteral("Also apply these user-provided polish instructions:\n") + prompt);
    const QString guidance = dictionaryGuidance.value_or(QString()).trimmed();
    if (!guidance.isEmpty())
        sections.append(guidance);
    return sections.join(QStringLiteral("\n\n"));
}

QString OpenAIClient::translationInstructions(const TranslationLanguage &targetLanguage,
                                              const std::optional<InputLanguageHint> &sourceLanguage)
{
    QStringList sections{
        QStringLiteral("Translate dictated speech into natural %1 (%2).\n").arg(targetLanguage.displayName, targetLanguage.code)
        + QStringLiteral("Preserve meaning, tone, paragraph breaks, punctuation, and formatting when possible.\n"
                         "Keep names, email addresses, URLs, company names, product names, and other proper nouns "
                         "unchanged unless there is a standard localized form.\n"
                         "If the transcript is already in the target language, keep the wording as close to the "
                         "original as possible.\n"
                         "Return only the translated transcript text.\n"
                         "Do not add titles, explanations, notes, or follow-up questions.")};
    if (sourceLanguage)
        sections.append(QStringLiteral("The original speech language is likely %1 (%2).")
                            .arg(sourceLanguage->displayName, sourceLanguage->code));
    return sections.join(QStringLiteral("\n\n"));
}
