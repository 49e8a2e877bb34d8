#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QProcess;
class WindowModel;
class WindowModelHost;

// The main window, run in a process of its own that starts when the window opens
// and ends when it closes: the toolkit's interface libraries and the scene's memory
// leave with it, so a Quorla that lives in the tray stays small. The model stays
// here; the window's process mirrors it over a socket pair.
class WindowProcess : public QObject
{
    Q_OBJECT

public:
    // program: the window's executable, started with --window-link.
    WindowProcess(WindowModel &model, QString program, QObject *parent = nullptr);
    // quorla-window in lib/quorla beside bin/, in the build tree as installed.
    static QString installedProgram();
    ~WindowProcess() override;

    // Starts the window's process, or brings its window to the front.
    void show();
    // Closes the window as the user would; its process ends after it.
    void close();
    [[nodiscard]] bool isOpen() const;
    // The window's process, while it runs.
    [[nodiscard]] qint64 processId() const;

    static constexpr int linkDescriptor = 3;

Q_SIGNALS:
    // The window drew its first frame, or came to the front when it was open.
    void windowShown();
    // The window's process ended (closed, quit or failed).
    void windowReleased();

private:
    void start();
    void finished();

    WindowModel &m_model;
    QString m_program;
    QPointer<QProcess> m_process;
    QPointer<WindowModelHost> m_host;
    // A show not yet acknowledged by the window's process.
    bool m_showPending = false;
};
