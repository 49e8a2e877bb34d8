#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <memory>

class AppModel;
class QQmlApplicationEngine;

// The main window's life: built on demand, shown and raised (restored when
// minimized), and released with its whole QML scene, the engine's caches and the
// freed heap when the user closes it, so Quorla living in the tray holds little
// memory. Closing never quits Quorla.
class MainWindowController : public QObject
{
    Q_OBJECT

public:
    explicit MainWindowController(AppModel &model, QObject *parent = nullptr);
    ~MainWindowController() override;

    // Shows the window, building its scene first when it was released, and brings it
    // to the front.
    void show();
    // Closes the window as the user would; the scene is released right after.
    void close();
    [[nodiscard]] bool isOpen() const { return m_engine != nullptr; }
    [[nodiscard]] QQuickWindow *window() const { return m_window; }

Q_SIGNALS:
    // The window was closed and its scene destroyed.
    void windowReleased();

private:
    void build();
    void release();

    AppModel &m_model;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QPointer<QQuickWindow> m_window;
};
