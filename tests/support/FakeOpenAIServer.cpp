#include "FakeOpenAIServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTimer>

namespace {

QByteArray headerBlock(const FakeOpenAIServer::Reply &reply, qint64 contentLength)
{
    return "HTTP/1.1 " + QByteArray::number(reply.status) + " Fake\r\nContent-Type: " + reply.contentType
         + "\r\nContent-Length: " + QByteArray::number(contentLength) + "\r\nConnection: keep-alive\r\n\r\n";
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

FakeOpenAIServer::FakeOpenAIServer(QObject *parent)
    : QObject(parent)
{
    setReply("/v1/audio/transcriptions", json(200, transcriptionBody("Hello from the fake server.")));
    setReply("/v1/chat/completions", json(200, chatBody("Polished by the fake server.")));
    setReply("/api/app/latest", json(200, R"({"version":"0.0.1","downloadUrl":"https://quorla.app/download"})"));
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            socket->setParent(nullptr);
            m_buffers.insert(socket, {});
            ++m_connectionCount;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readFrom(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                m_buffers.remove(socket);
                socket->deleteLater();
            });
        }
    });
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        qFatal("FakeOpenAIServer: cannot listen on 127.0.0.1: %s", qPrintable(m_server.errorString()));
}

FakeOpenAIServer::~FakeOpenAIServer()
{
    for (QTcpSocket *socket : m_buffers.keys()) {
        socket->disconnect(this);
        socket->abort();
        delete socket;
    }
}

QByteArray FakeOpenAIServer::transcriptionBody(const QString &text)
{
    return compact({{"text", text}});
}

QByteArray FakeOpenAIServer::chatBody(const QString &content)
{
    return compact({{"choices", QJsonArray{QJsonObject{{"message", QJsonObject{{"role", "assistant"}, {"content", content}}}}}}});
}

void FakeOpenAIServer::readFrom(QTcpSocket *socket)
{
    if (webSocketUpgrades && m_buffers[socket].isEmpty() && socket->peek(4096).toLower().contains("\r\nupgrade: websocket")) {
        socket->disconnect(this);
        m_buffers.remove(socket);
        return webSocketUpgrades(socket);
    }
    m_buffers[socket] += socket->readAll();
    // Several requests may follow one another on a kept-alive connection.
    while (m_buffers.contains(socket)) {
        QByteArray &buffer = m_buffers[socket];
        const qsizetype headerEnd = buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        Request request{requestLine.value(0), requestLine.value(1), {}, {}};
        for (const QByteArray &line : lines.mid(1)) {
            if (const qsizetype colon = line.indexOf(':'); colon > 0)
                request.headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
        }
        const qint64 length = request.headers.value("content-length", "0").toLongLong();
        if (buffer.size() < headerEnd + 4 + length)
            return;
        request.body = buffer.mid(headerEnd + 4, length);
        buffer.remove(0, headerEnd + 4 + length);
        m_requests.append(request);
        const QByteArray path = request.path.split('?').value(0);
        auto queued = m_queued.find(path);
        // Answering may drop the connection, and with it the buffer.
        const Reply reply = queued != m_queued.end() && !queued->isEmpty()
                              ? queued->takeFirst()
                              : m_replies.value(path, json(404, R"({"error":{"message":"Unknown path"}})"));
        if (reply.delayMilliseconds > 0)
            QTimer::singleShot(reply.delayMilliseconds, Qt::PreciseTimer, socket, [this, socket, reply] { respond(socket, reply); });
        else
            respond(socket, reply);
    }
}

void FakeOpenAIServer::respond(QTcpSocket *socket, const Reply &reply)
{
    if (reply.behaviour == Behaviour::answer) {
        socket->write(headerBlock(reply, reply.body.size()) + reply.body);
    } else if (reply.behaviour == Behaviour::closeMidReply) {
        socket->write(headerBlock(reply, reply.body.size()) + reply.body.left(reply.body.size() / 2));
        socket->flush();
        socket->abort();
    } else if (reply.behaviour == Behaviour::hugeBody) {
        socket->write(headerBlock(reply, reply.hugeBodyBytes));
    }
}
