#pragma once

#include <QHash>
#include <QMap>
#include <QObject>
#include <QTcpServer>
#include <QUrl>
#include <functional>

class QTcpSocket;

// An OpenAI-compatible HTTP/1.1 server on 127.0.0.1 for tests and benchmarks: the
// transcription, chat and release endpoints with canned answers, every request
// recorded byte for byte, keep-alive connections, and misbehaviour on demand.
class FakeOpenAIServer : public QObject
{
    Q_OBJECT

public:
    struct Request {
        QByteArray method, path;
        QMap<QByteArray, QByteArray> headers; // names in lower case
        QByteArray body;
    };
    enum class Behaviour {
        answer,
        closeMidReply, // headers and half the body, then the connection is dropped
        stall,         // reads the request, never answers
        hugeBody,      // declares a body of hugeBodyBytes and sends none: only a client that waits for it fails
    };
    struct Reply {
        int status = 200;
        QByteArray body, contentType = "application/json";
        Behaviour behaviour = Behaviour::answer;
        qint64 hugeBodyBytes = 0;
        int delayMilliseconds = 0; // the service's think time before it answers
    };

    explicit FakeOpenAIServer(QObject *parent = nullptr);
    ~FakeOpenAIServer() override;

    // http://127.0.0.1:<port>
    [[nodiscard]] QUrl baseURL() const { return QUrl("http://127.0.0.1:" + QString::number(m_server.serverPort())); }
    [[nodiscard]] QUrl url(const QString &path) const { return QUrl(baseURL().toString() + path); }
    // The answer for a path from now on; an enqueued reply is used once, before it.
    void setReply(const QByteArray &path, Reply reply) { m_replies.insert(path, std::move(reply)); }
    void enqueueReply(const QByteArray &path, Reply reply) { m_queued[path].append(std::move(reply)); }

    // Takes WebSocket handshakes, unread, so that one base address serves both.
    std::function<void(QTcpSocket *)> webSocketUpgrades;

    [[nodiscard]] const QList<Request> &requests() const { return m_requests; }
    [[nodiscard]] int connectionCount() const { return m_connectionCount; }

    static Reply json(int status, const QByteArray &body) { return Reply{status, body}; }
    static QByteArray transcriptionBody(const QString &text);
    static QByteArray chatBody(const QString &content);

private:
    void readFrom(QTcpSocket *socket);
    void respond(QTcpSocket *socket, const Reply &reply);

    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_buffers;
    QMap<QByteArray, Reply> m_replies;
    QMap<QByteArray, QList<Reply>> m_queued;
    QList<Request> m_requests;
    int m_connectionCount = 0;
};
