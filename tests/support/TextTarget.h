#pragma once

#include "platform/ApplicationHandle.h"

#include <QProcess>
#include <functional>

class Workspace;

// Spins the event loop (Quorla serves its clipboard from it) until the condition holds.
bool waitUntil(const std::function<bool()> &condition, int timeoutMs = 10000);
// Empty when the file cannot be read.
QByteArray fileContents(const QString &path);

// An application to insert text into, or to see keys arrive in, for the integration
// tests and benchmarks. It is up once its window is the active one; it is stopped when
// this goes.
class TextTarget
{
public:
    // It must first print "ready", as quorla_text_target and gtk_text_target.py do.
    TextTarget(Workspace &workspace, const QString &program, const QStringList &arguments,
               const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    TextTarget(const TextTarget &) = delete;
    TextTarget &operator=(const TextTarget &) = delete;
    ~TextTarget();

    // Null when it did not come up.
    [[nodiscard]] const ApplicationHandlePtr &application() const { return m_application; }
    [[nodiscard]] QProcess &process() { return m_process; }

    // A key quorla_text_target's line edit reported.
    struct Key {
        bool press;
        int key;                         // Qt::Key
        long long arrivedAtMicroseconds; // steady clock
    };
    // The keys reported since the last take, waiting waitMs for more to arrive.
    QList<Key> takeKeys(int waitMs = 100);

private:
    QProcess m_process;
    ApplicationHandlePtr m_application;
    QByteArray m_output; // a key's line not yet read whole
};
