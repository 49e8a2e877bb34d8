#include "WindowProcess.h"

#include "app/WindowModelHost.h"

#include <QCoreApplication>
#include <QDir>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QProcess>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcWindowProcess, "quorla.window.process")

WindowProcess::WindowProcess(WindowModel &model, QString program, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_program(std::move(program))
{
}

WindowProcess::~WindowProcess()
{
    if (!m_process)
        return;
    // Closing the link ends the window's process; wait briefly so none outlives us.
    m_process->disconnect(this);
    delete m_host;
    if (!m_process->waitForFinished(2000)) {
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

QString WindowProcess::installedProgram()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/quorla/quorla-window"));
}

bool WindowProcess::isOpen() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

qint64 WindowProcess::processId() const
{
    return m_process ? m_process->processId() : 0;
}

void WindowProcess::show()
{
    m_showPending = true;
    if (isOpen() && m_host)
        m_host->requestShow();
    else
        start();
}

void WindowProcess::close()
{
    if (m_host)
        m_host->requestClose();
}

void WindowProcess::start()
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        qCWarning(lcWindowProcess) << "no socket for the window:" << strerror(errno);
        return;
    }
    const int windowEnd = ends[1];
    auto *process = new QProcess(this);
    process->setProgram(m_program);
    process->setArguments({QStringLiteral("--window-link"), QString::number(linkDescriptor)});
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    // Runs in the child between fork and exec: only async-signal-safe calls.
    process->setChildProcessModifier([windowEnd] {
        if (windowEnd == linkDescriptor)
            ::fcntl(windowEnd, F_SETFD, 0);
        else
            ::dup2(windowEnd, linkDescriptor);
    });
    auto *socket = new QLocalSocket;
    if (!socket->setSocketDescriptor(ends[0])) {
        ::close(ends[0]);
        ::close(windowEnd);
        delete socket;
        delete process;
        return;
    }
    m_process = process;
    m_host = new WindowModelHost(m_model, socket, this);
    connect(m_host, &WindowModelHost::windowShown, this, [this] {
        m_showPending = false;
        Q_EMIT windowShown();
    });
    connect(process, &QProcess::finished, this, &WindowProcess::finished);
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            qCWarning(lcWindowProcess) << "the window could not start:" << process->errorString();
            m_showPending = false;
            finished();
        }
    });
    process->start();
    ::close(windowEnd);
}

void WindowProcess::finished()
{
    if (!m_process)
        return;
    const bool failed = m_process->exitStatus() == QProcess::CrashExit || m_process->exitCode() != 0;
    if (failed)
        qCWarning(lcWindowProcess) << "the window's process ended with" << m_process->exitCode()
                                   << m_process->errorString();
    m_process->deleteLater();
    m_process = nullptr;
    delete m_host;
    // Asked to show as it was closing: open it again (never after a failure, which
    // would only repeat).
    const bool reopen = m_showPending && !failed;
    m_showPending = reopen;
    Q_EMIT windowReleased();
    if (reopen)
        start();
}
