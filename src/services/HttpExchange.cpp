#include "HttpExchange.h"

#include "support/PlatformError.h"

#include <QCoro/QCoroNetworkReply>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QScopeGuard>
#include <memory>

namespace {

struct ReplyBuffer {
    QByteArray body;
    bool overflowed = false;
};

// The error codes Qt derives from an HTTP status: the reply itself is then intact.
bool isStatusError(QNetworkReply::NetworkError error)
{
    return (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError)
        || error == QNetworkReply::ProtocolInvalidOperationError
        || error == QNetworkReply::ProxyAuthenticationRequiredError
        || (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

} // namespace

QCoro::Task<HttpReply> sendHttpRequest(QNetworkAccessManager *network, QNetworkRequest request, QByteArray verb,
                                       QByteArray body, qint64 maxReplyBytes)
{
    QPointer<QNetworkReply> reply = network->sendCustomRequest(request, verb, body);
    const auto release = qScopeGuard([reply] {
        if (reply)
            reply->deleteLater();
    });
    auto buffer = std::make_shared<ReplyBuffer>();
    const auto stopReading = [reply, buffer] {
        buffer->overflowed = true;
        buffer->body.clear();
        reply->abort();
    };
    // Reading as the data arrives lets an oversized reply be cut off early instead of
    // being held whole in memory.
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, buffer, maxReplyBytes, stopReading] {
        const QVariant declared = reply->header(QNetworkRequest::ContentLengthHeader);
        if (!buffer->overflowed && declared.isValid() && declared.toLongLong() > maxReplyBytes)
            stopReading();
    });
    QObject::connect(reply, &QIODevice::readyRead, reply, [reply, buffer, maxReplyBytes, stopReading] {
        if (buffer->overflowed)
            return;
        buffer->body += reply->readAll();
        if (buffer->body.size() > maxReplyBytes)
            stopReading();
    });

    co_await qCoro(reply.data()).waitForFinished();
    if (!reply)
        throw PlatformError(PlatformError::Domain::network, QStringLiteral("The request was cancelled."));
    if (buffer->overflowed)
        throw PlatformError(PlatformError::Domain::network,
                            QStringLiteral("The server's reply was larger than %1 MB, so it was not read.")
                                .arg(maxReplyBytes / (qint64(1024) * 1024)));

    const QNetworkReply::NetworkError error = reply->error();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (error == QNetworkReply::OperationCanceledError)
        // Nothing else aborts these requests: the transfer time-out fired.
        throw PlatformError(PlatformError::Domain::network, QStringLiteral("The request timed out."), error);
    if (error != QNetworkReply::NoError && !(status.isValid() && isStatusError(error)))
        throw PlatformError(PlatformError::Domain::network, reply->errorString(), error);

    buffer->body += reply->readAll();
    if (buffer->body.size() > maxReplyBytes)
        throw PlatformError(PlatformError::Domain::network,
                            QStringLiteral("The server's reply was larger than %1 MB, so it was not read.")
                                .arg(maxReplyBytes / (qint64(1024) * 1024)));
    HttpReply result;
    if (status.isValid())
        result.statusCode = status.toInt();
    result.body = std::move(buffer->body);
    co_return result;
}
