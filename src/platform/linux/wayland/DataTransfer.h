#pragma once

#include <QByteArray>
#include <QObject>

#include <QCoro/QCoroTask>

#include <chrono>
#include <optional>

class QSocketNotifier;

// Selection contents travel through pipes between the owner and the reader. Both ends are
// driven from the event loop, so a slow or silent peer never holds the main thread.

// Reads the pipe until its writer closes it, then closes it; nothing when the writer stays
// silent past the limit, fails, or sends more than `maxBytes`.
QCoro::Task<std::optional<QByteArray>> receiveAll(int fd, std::chrono::milliseconds limit, qsizetype maxBytes);

// Writes the bytes into the pipe as the reader takes them, then closes it and goes away;
// a reader that stops taking them is given up on after a while.
class PipeSender : public QObject
{
    Q_OBJECT

public:
    static void start(int fd, QByteArray bytes, QObject *owner);

private:
    PipeSender(int fd, QByteArray bytes, QObject *owner);
    ~PipeSender() override;
    void writeMore();

    int m_fd;
    QByteArray m_bytes;
    qsizetype m_written = 0;
    QSocketNotifier *m_notifier;
};

// Turns a descriptor's readability into a signal a coroutine can wait for.
class ReadinessSignal : public QObject
{
    Q_OBJECT

public:
    explicit ReadinessSignal(int fd);
    // The waiting coroutine resumes inside the notifier's signal: it must not be deleted there.
    void stop();

Q_SIGNALS:
    void ready();
};
