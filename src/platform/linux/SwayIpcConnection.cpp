#include "SwayIpcConnection.h"

#include <QFileInfo>
#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QThread>
#include <cstring>

Q_LOGGING_CATEGORY(lcSwayIpc, "quorla.sway")

namespace {

constexpr QByteArrayView magic("i3-ipc");
constexpr qsizetype headerSize = 6 + 2 * sizeof(quint32);
constexpr quint32 eventBit = 0x80000000U;
// A reply larger than this is not sway talking: drop the connection rather than buffer it.
constexpr quint32 largestPayload = 16U * 1024U * 1024U;

QByteArray frame(quint32 type, const QByteArray &payload)
{
    const auto length = quint32(payload.size());
    QByteArray bytes(magic.data(), magic.size());
    bytes.append(reinterpret_cast<const char *>(&length), sizeof length); // native order, as sway reads it
    bytes.append(reinterpret_cast<const char *>(&type), sizeof type);
    bytes.append(payload);
    return bytes;
}

} // namespace

SwayIpcConnection::SwayIpcConnection(QString socketPath, QObject *parent)
    : QObject(parent)
    , m_socketPath(std::move(socketPath))
{
    connect(&m_socket, &QLocalSocket::connected, this, [this] {
        m_socket.write(std::exchange(m_unsent, {}));
    });
    connect(&m_socket, &QLocalSocket::readyRead, this, &SwayIpcConnection::readFrames);
    connect(&m_socket, &QLocalSocket::disconnected, this, &SwayIpcConnection::disconnected);
    connect(&m_socket, &QLocalSocket::errorOccurred, this, [this](QLocalSocket::LocalSocketError error) {
        qCWarning(lcSwayIpc) << "sway IPC:" << error << m_socket.errorString();
        if (m_socket.state() == QLocalSocket::UnconnectedState)
            Q_EMIT disconnected();
    });
}

QString SwayIpcConnection::sessionSocketPath()
{
    const QString path = qEnvironmentVariable("SWAYSOCK");
    return !path.isEmpty() && QFileInfo(path).exists() ? path : QString();
}

void SwayIpcConnection::open()
{
    m_socket.connectToServer(m_socketPath);
}

void SwayIpcConnection::send(Message type, const QByteArray &payload, ReplyHandler onReply)
{
    m_handlers.push_back(std::move(onReply));
    const QByteArray bytes = frame(quint32(type), payload);
    if (m_socket.state() == QLocalSocket::ConnectedState)
        m_socket.write(bytes);
    else
        m_unsent.append(bytes);
}

void SwayIpcConnection::close()
{
    m_handlers.clear();
    if (m_socket.state() == QLocalSocket::ConnectedState)
        m_socket.flush();
    m_socket.disconnectFromServer();
}

void SwayIpcConnection::closeWhenAnswered()
{
    m_closing = true;
    if (QThread::currentThread()->loopLevel() == 0) {
        const QDeadlineTimer deadline(1000);
        while (!m_handlers.empty() && m_socket.state() != QLocalSocket::UnconnectedState && !deadline.hasExpired()) {
            m_socket.flush();
            if (!m_socket.waitForReadyRead(int(deadline.remainingTime())))
                break;
        }
        m_handlers.clear();
    }
    if (m_handlers.empty()) {
        close();
        deleteLater();
    }
}

void SwayIpcConnection::readFrames()
{
    m_received.append(m_socket.readAll());
    while (m_received.size() >= headerSize) {
        if (!m_received.startsWith(magic)) {
            qCWarning(lcSwayIpc) << "sway IPC: not an i3 IPC frame; closing";
            m_received.clear();
            close();
            return;
        }
        quint32 length = 0;
        quint32 type = 0;
        std::memcpy(&length, m_received.constData() + magic.size(), sizeof length);
        std::memcpy(&type, m_received.constData() + magic.size() + sizeof length, sizeof type);
        if (length > largestPayload) {
            m_received.clear();
            close();
            return;
        }
        if (m_received.size() < headerSize + qsizetype(length))
            return;
        const QJsonDocument payload = QJsonDocument::fromJson(m_received.mid(headerSize, length));
        m_received.remove(0, headerSize + length);
        if (type & eventBit) {
            Q_EMIT eventArrived(Event(type & ~eventBit), payload);
        } else if (!m_handlers.empty()) {
            const ReplyHandler handler = std::move(m_handlers.front());
            m_handlers.pop_front();
            if (handler)
                handler(payload);
            if (m_closing && m_handlers.empty()) {
                close();
                deleteLater();
                return;
            }
        }
    }
}
