#include "KeyEchoProcess.h"

#include <QTest>

KeyEchoProcess::KeyEchoProcess(QString program)
    : m_program(std::move(program))
{
}

KeyEchoProcess::~KeyEchoProcess()
{
    m_process.kill();
    m_process.waitForFinished(2000);
}

bool KeyEchoProcess::start()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(m_program, {QStringLiteral("widgets"), QStringLiteral("/dev/null"), QString()});
    const auto ready = [this] { return readLines(), m_focused; };
    return m_process.waitForStarted(5000) && QTest::qWaitFor(ready, 10000);
}

QList<KeyEchoProcess::Key> KeyEchoProcess::takeKeys(int waitMs)
{
    QTest::qWait(waitMs);
    readLines();
    return std::exchange(m_keys, {});
}

std::optional<KeyEchoProcess::Key> KeyEchoProcess::waitForKey(bool press, int key, int timeoutMs)
{
    std::optional<Key> found;
    (void)QTest::qWaitFor(
        [&] {
            readLines();
            for (qsizetype i = 0; i < m_keys.size(); ++i) {
                if (m_keys[i].press == press && m_keys[i].key == key) {
                    found = m_keys.takeAt(i);
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    return found;
}

void KeyEchoProcess::readLines()
{
    m_process.waitForReadyRead(1);
    m_buffer += m_process.readAllStandardOutput();
    qsizetype end = 0;
    while ((end = m_buffer.indexOf('\n')) >= 0) {
        const QList<QByteArray> fields = m_buffer.left(end).split(' ');
        m_buffer.remove(0, end + 1);
        if (fields.value(0) == "ready") {
            m_focused = true;
        } else if (fields.size() == 3) {
            m_keys.append({fields[0] == "press", fields[1].toInt(), fields[2].toLongLong()});
        }
    }
}
