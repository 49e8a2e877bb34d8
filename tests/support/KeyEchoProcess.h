#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// Runs quorla_text_target in keys mode and reads the keys it reports.
class KeyEchoProcess
{
public:
    struct Key {
        bool press;
        int key;                         // Qt::Key
        long long arrivedAtMicroseconds; // steady clock
    };

    explicit KeyEchoProcess(QString program);
    ~KeyEchoProcess();

    // Starts the target and waits until its line edit has the keyboard focus.
    bool start();
    // Keys received since the last take, waiting up to waitMs for more to arrive.
    QList<Key> takeKeys(int waitMs = 100);
    // Waits until a key matching (press, key) arrives; absent after timeoutMs.
    std::optional<Key> waitForKey(bool press, int key, int timeoutMs = 2000);

private:
    void readLines();

    QString m_program;
    QProcess m_process;
    QByteArray m_buffer;
    QList<Key> m_keys;
    bool m_focused = false;
};
