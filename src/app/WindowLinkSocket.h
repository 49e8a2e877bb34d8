#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>

class QLocalSocket;

// One end of the window's link: whole frames in, frames out, and an end to the link
// when the other side sends what this side cannot read.
class WindowLinkSocket : public QObject
{
    Q_OBJECT

public:
    // Takes the connected socket; name says which end in log lines.
    WindowLinkSocket(QLocalSocket *socket, const char *name, QObject *parent = nullptr);
    // Closes the link without announcing it to an owner that is going away.
    ~WindowLinkSocket() override;

    [[nodiscard]] bool isConnected() const;
    void send(const QByteArray &body);
    // Logs why and closes the link; disconnected follows.
    void drop(const char *why);
    // Delivers the frames that arrived before anyone listened.
    void readFrames();

Q_SIGNALS:
    void frameReceived(const QByteArray &body);
    void disconnected();

private:
    QPointer<QLocalSocket> m_socket;
    const char *m_name;
};
