#include "TextTarget.h"

#include "platform/Workspace.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTest>

bool waitUntil(const std::function<bool()> &condition, int timeoutMs)
{
    for (QDeadlineTimer deadline(timeoutMs); !condition(); QTest::qWait(10)) {
        if (deadline.hasExpired())
            return false;
    }
    return true;
}

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TextTarget::TextTarget(Workspace &workspace, const QString &program, const QStringList &arguments,
                       const QProcessEnvironment &environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(5000) || !waitUntil([&] { return m_process.readAllStandardOutput().contains("ready"); }))
        return;
    ApplicationHandlePtr frontmost;
    if (waitUntil([&] {
            frontmost = workspace.frontmostApplication();
            return frontmost && frontmost->processIdentifier() == m_process.processId();
        }))
        m_application = std::move(frontmost);
}

TextTarget::~TextTarget()
{
    m_process.terminate();
    if (!m_process.waitForFinished(3000))
        m_process.kill();
    m_process.waitForFinished(3000);
}

// From lines of "press|release KEY MICROSECONDS".
QList<TextTarget::Key> TextTarget::takeKeys(int waitMs)
{
    QTest::qWait(waitMs);
    m_output += m_process.readAllStandardOutput();
    QList<Key> keys;
    for (qsizetype end; (end = m_output.indexOf('\n')) >= 0; m_output.remove(0, end + 1)) {
        const QList<QByteArray> fields = m_output.left(end).split(' ');
        if (fields.size() == 3)
            keys.append({fields[0] == "press", fields[1].toInt(), fields[2].toLongLong()});
    }
    return keys;
}
