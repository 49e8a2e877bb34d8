#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QNetworkRequest>
#include <optional>

class QNetworkAccessManager;

// One finished HTTP request: the status (absent when the reply was not HTTP) and the body.
struct HttpReply {
    std::optional<int> statusCode;
    QByteArray body;
};

// Replies past this size are abandoned: no answer of these services is anywhere near it.
inline constexpr qint64 maxHttpReplyBytes = qint64(5) * 1024 * 1024;

// Sends one request on the shared manager and reads the whole reply. An HTTP error
// status is a reply, not a failure; transport failures, time-outs and replies past
// maxReplyBytes throw PlatformError (network domain).
QCoro::Task<HttpReply> sendHttpRequest(QNetworkAccessManager *network, QNetworkRequest request, QByteArray verb,
                                       QByteArray body, qint64 maxReplyBytes = maxHttpReplyBytes);
