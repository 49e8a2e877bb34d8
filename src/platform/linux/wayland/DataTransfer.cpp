#include "DataTransfer.h"

#include <QDeadlineTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <QCoro/QCoroSignal>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A reader that takes nothing for this long has gone away without closing its end.
constexpr std::chrono::seconds senderPatience{5};

void makeNonBlocking(int fd)
{
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
}

} // namespace

ReadinessSignal::ReadinessSignal(int fd)
{
    auto *notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &ReadinessSignal::ready);
}

void ReadinessSignal::stop()
{
    for (QSocketNotifier *notifier : findChildren<QSocketNotifier *>())
        notifier->setEnabled(false);
    deleteLater();
}

QCoro::Task<std::optional<QByteArray>> receiveAll(int fd, std::chrono::milliseconds limit, qsizetype maxBytes)
{
    makeNonBlocking(fd);
    auto *readable = new ReadinessSignal(fd);
    const QDeadlineTimer deadline(limit);
    QByteArray bytes;
    std::optional<QByteArray> result;
    for (;;) {
        char chunk[65536];
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n > 0) {
            bytes.append(chunk, n);
            if (bytes.size() > maxBytes)
                break;
            continue;
        }
        if (n == 0) {
            result = std::move(bytes);
            break;
        }
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN || deadline.hasExpired())
            break;
        const auto ready = co_await qCoro(readable, &ReadinessSignal::ready,
                                          std::chrono::milliseconds{std::max<qint64>(1, deadline.remainingTime())});
        if (!ready)
            break;
    }
    readable->stop();
    ::close(fd);
    co_return result;
}

void PipeSender::start(int fd, QByteArray bytes, QObject *owner)
{
    new PipeSender(fd, std::move(bytes), owner);
}

PipeSender::PipeSender(int fd, QByteArray bytes, QObject *owner)
    : QObject(owner)
    , m_fd(fd)
    , m_bytes(std::move(bytes))
    , m_notifier(new QSocketNotifier(fd, QSocketNotifier::Write, this))
{
    makeNonBlocking(fd);
    connect(m_notifier, &QSocketNotifier::activated, this, &PipeSender::writeMore);
    QTimer::singleShot(senderPatience, this, [this] { deleteLater(); });
    writeMore();
}

PipeSender::~PipeSender()
{
    ::close(m_fd);
}

void PipeSender::writeMore()
{
    while (m_written < m_bytes.size()) {
        const ssize_t n = ::write(m_fd, m_bytes.constData() + m_written, size_t(m_bytes.size() - m_written));
        if (n > 0) {
            m_written += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno == EAGAIN)
            return; // the notifier says when the reader has taken some
        break;
    }
    m_notifier->setEnabled(false);
    deleteLater();
}
