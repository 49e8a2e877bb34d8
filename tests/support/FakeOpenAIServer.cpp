#include "FakeOpenAIServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <memory>

namespace {

QByteArray headerBlock(const FakeOpenAIServer::Reply &reply, qint64 contentLength)
{
    return "HTTP/1.1 " + QByteArray::number(reply.status) + " Fake\r\nContent-Type: " + reply.contentType + "\r\n"
        + "Content-Length: " + QByteArray::number(contentLength) + "\r\n" + "Connection: keep-alive\r\n\r\n";
}

} // namespace

FakeOpenAIServer::FakeOpenAIServer(QObject *parent)
    : QObject(parent)
{
    setReply("/v1/audio/transcriptions", json(200, transcriptionBody(QStringLiteral("Hello from the fake server."))));
    setReply("/v1/chat/completions", json(200, chatBody(QStringLiteral("Polished by the fake server."))));
    setReply("/api/app/latest", json(200, R"({"version":"0.0.1","downloadUrl":"https://quorla.app/download"})"));
    connect(&m_server, &QTcpServer::newConnection, this, &FakeOpenAIServer::accept);
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        qFatal("FakeOpenAIServer: cannot listen on 127.0.0.1: %s", qPrintable(m_server.errorString()));
}

FakeOpenAIServer::~FakeOpenAIServer()
{
    const auto sockets = m_buffers.keys();
    for (QTcpSocket *socket : sockets) {
        socket->disconnect(this);
        socket->abort();
        delete socket;
    }
}

QUrl FakeOpenAIServer::baseURL() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()));
}

QUrl FakeOpenAIServer::url(const QString &path) const
{
    return QUrl(baseURL().toString() + path);
}

void FakeOpenAIServer::setReply(const QByteArray &path, Reply reply)
{
    m_replies.insert(path, std::move(reply));
}

void FakeOpenAIServer::enqueueReply(const QByteArray &path, Reply reply)
{
    m_queued[path].append(std::move(reply));
}

QByteArray FakeOpenAIServer::transcriptionBody(const QString &text)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("text"), text}}).toJson(QJsonDocument::Compact);
}

QByteArray FakeOpenAIServer::chatBody(const QString &content)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                              {QStringLiteral("content"), content}};
    return QJsonDocument(QJsonObject{{QStringLiteral("choices"),
                                      QJsonArray{QJsonObject{{QStringLiteral("message"), message}}}}})
        .toJson(QJsonDocument::Compact);
}

FakeOpenAIServer::Reply FakeOpenAIServer::replyFor(const QByteArray &path)
{
    auto queued = m_queued.find(path);
    if (queued != m_queued.end() && !queued->isEmpty())
        return queued->takeFirst();
    return m_replies.value(path, json(404, R"({"error":{"message":"Unknown path"}})"));
}

void FakeOpenAIServer::accept()
{
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
}

void FakeOpenAIServer::readFrom(QTcpSocket *socket)
{
    m_buffers[socket] += socket->readAll();
    // Several requests may follow one another on a kept-alive connection.
    while (m_buffers.contains(socket)) {
        QByteArray &buffer = m_buffers[socket];
        const qsizetype headerEnd = buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
        Request request;
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.method = requestLine.value(0);
        request.path = requestLine.value(1);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(), lines[i].mid(colon + 1).trimmed());
        }
        const qint64 length = request.headers.value("content-length", "0").toLongLong();
        if (buffer.size() < headerEnd + 4 + length)
            return;
        request.body = buffer.mid(headerEnd + 4, length);
        buffer.remove(0, headerEnd + 4 + length);

        const QByteArray path = request.path.split('?').value(0);
        m_requests.append(request);
        // Answering may drop the connection, and with it the buffer.
        respond(socket, replyFor(path));
    }
}

void FakeOpenAIServer::respond(QTcpSocket *socket, const Reply &reply)
{
    switch (reply.behaviour) {
    case Behaviour::answer:
        socket->write(headerBlock(reply, reply.body.size()) + reply.body);
        return;
    case Behaviour::stall:
        return;
    case Behaviour::closeMidReply:
        socket->write(headerBlock(reply, reply.body.size()) + reply.body.left(reply.body.size() / 2));
        socket->flush();
        socket->abort();
        return;
    case Behaviour::hugeBody:
        socket->write(headerBlock(reply, reply.hugeBodyBytes));
        streamFiller(socket, reply.hugeBodyBytes);
        return;
    }
}

void FakeOpenAIServer::streamFiller(QTcpSocket *socket, qint64 remaining)
{
    // Written as the client drains it, so a client that stops reading stops the stream.
    static constexpr qint64 chunk = 256 * 1024;
    static const QByteArray filler(chunk, 'x');
    auto left = std::make_shared<qint64>(remaining);
    auto connection = std::make_shared<QMetaObject::Connection>();
    const auto writeMore = [this, socket, left, connection] {
        if (*left <= 0 || socket->bytesToWrite() > chunk)
            return;
        const qint64 size = std::min(chunk, *left);
        socket->write(filler.constData(), size);
        *left -= size;
        m_hugeBytesWritten += size;
        if (*left <= 0)
            QObject::disconnect(*connection);
    };
    *connection = connect(socket, &QTcpSocket::bytesWritten, this, writeMore);
    writeMore();
}
