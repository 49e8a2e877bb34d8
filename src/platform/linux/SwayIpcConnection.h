#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QObject>
#include <deque>
#include <functional>

// One connection to sway's IPC socket (i3 IPC framing: "i3-ipc", length, type, JSON).
// Everything is asynchronous on the thread that owns it: messages sent before the socket
// connects wait for it, replies come back in the order the messages were sent.
class SwayIpcConnection : public QObject
{
    Q_OBJECT

public:
    enum class Message : quint32 { runCommand = 0,
                                   subscribe = 2,
                                   getInputs = 100 };
    enum class Event : quint32 { binding = 5,
                                 input = 21 };
    using ReplyHandler = std::function<void(const QJsonDocument &reply)>;

    explicit SwayIpcConnection(QString socketPath, QObject *parent = nullptr);

    // SWAYSOCK, when it names a socket that exists; else empty.
    [[nodiscard]] static QString sessionSocketPath();

    // A broken or refused socket ends in disconnected().
    void open();
    void send(Message type, const QByteArray &payload, ReplyHandler onReply = {});
    // Replies still owed; zero once sway has answered everything sent so far.
    [[nodiscard]] qsizetype pendingReplies() const { return qsizetype(m_handlers.size()); }
    // Writes what is queued without waiting and closes.
    void close();
    // Closes and deletes itself once sway has answered everything sent: sway drops the
    // commands of a client that hung up unread. With no event loop left to hear the
    // answer (Quorla quitting), waits for it here, a second at most.
    void closeWhenAnswered();

Q_SIGNALS:
    void eventArrived(SwayIpcConnection::Event type, const QJsonDocument &event);
    void disconnected();

private:
    void readFrames();

    QString m_socketPath;
    QLocalSocket m_socket;
    QByteArray m_unsent;
    QByteArray m_received;
    std::deque<ReplyHandler> m_handlers;
    bool m_closing = false;
};
