#include "OpenAIReplyValidation.h"

#include "models/QuorlaError.h"

#include <QJsonDocument>
#include <QJsonObject>

void validateOpenAIReply(const HttpReply &reply)
{
    if (!reply.statusCode)
        throw QuorlaError(QuorlaError::Kind::invalidAPIResponse);
    const int status = *reply.statusCode;
    if (status >= 200 && status <= 299)
        return;
    const QJsonDocument document = QJsonDocument::fromJson(reply.body);
    const QJsonValue message = document.object().value(u"error").toObject().value(u"message");
    if (document.isObject() && message.isString())
        throw QuorlaError::apiFailure(message.toString());
    throw QuorlaError::apiFailure(QStringLiteral("OpenAI request failed with status %1.").arg(status));
}
