#pragma once

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <memory>

class WindowModel;
class QQmlApplicationEngine;

// The main window's life in the window's process: built on demand, shown and raised
// (restored when minimized), and released with its whole QML scene when the user
// closes it, after which that process ends. Closing never quits Quorla itself.
class MainWindowController : public QObject
{
    Q_OBJECT

public:
    explicit MainWindowController(WindowModel &model, QObject *parent = nullptr);
    ~MainWindowController() override;

    // Shows the window, building its scene first when it was released, and brings it
    // to the front (restored when minimized).
    void show();
    // Closes the window as the user would; the scene is released right after.
    void close();
    [[nodiscard]] bool isOpen() const { return m_engine != nullptr; }
    [[nodiscard]] QQuickWindow *window() const { return m_window; }
    [[nodiscard]] QQmlApplicationEngine *engine() const { return m_engine.get(); }

Q_SIGNALS:
    // The window was closed and its scene destroyed.
    void windowReleased();

private:
    void build();
    void release();

    WindowModel &m_model;
    // One icon for every window built: the pixmaps drawn from it are cached under the
    // icon's identity, so a new icon per window would leave a new set behind each time.
    QIcon m_icon;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QPointer<QQuickWindow> m_window;
};
