#include "WindowLinkSocket.h"

#include "app/WindowLinkProtocol.h"

#include <QLocalSocket>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcWindowLink, "quorla.window.link")

WindowLinkSocket::WindowLinkSocket(QLocalSocket *socket, const char *name, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_name(name)
{
    m_socket->setParent(this);
    connect(m_socket, &QLocalSocket::readyRead, this, &WindowLinkSocket::readFrames);
    connect(m_socket, &QLocalSocket::disconnected, this, &WindowLinkSocket::disconnected);
}

WindowLinkSocket::~WindowLinkSocket()
{
    if (m_socket)
        m_socket->disconnect(this);
}

bool WindowLinkSocket::isConnected() const
{
    return m_socket && m_socket->state() == QLocalSocket::ConnectedState;
}

void WindowLinkSocket::send(const QByteArray &body)
{
    if (isConnected())
        WindowLink::send(*m_socket, body);
}

void WindowLinkSocket::drop(const char *why)
{
    qCWarning(lcWindowLink) << m_name << "closes the link:" << why;
    if (m_socket)
        m_socket->abort();
}

void WindowLinkSocket::readFrames()
{
    // A frame's handler may drop the link, which ends the loop.
    while (isConnected() && m_socket->bytesAvailable() > 0) {
        const std::optional<QByteArray> body = WindowLink::nextFrame(*m_socket);
        if (!body)
            return;
        Q_EMIT frameReceived(*body);
    }
}
