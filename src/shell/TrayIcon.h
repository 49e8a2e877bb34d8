#pragma once

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>

class AppModel;

// The tray item: present exactly while "showMenuBarIcon" is on, a distinct picture
// while recording, and a menu with the latest dictations, "Start Dictation" (or
// "Stop Dictation"), "Open Quorla" and "Quit".
class TrayIcon : public QObject
{
    Q_OBJECT

public:
    explicit TrayIcon(AppModel &model, QObject *parent = nullptr);

    [[nodiscard]] bool isShown() const { return m_icon.isVisible(); }
    [[nodiscard]] QMenu &menu() { return m_menu; }
    // The symbol the icon currently stands for, and its picture.
    [[nodiscard]] const QString &symbol() const { return m_symbol; }
    [[nodiscard]] QIcon picture() const { return m_icon.icon(); }

Q_SIGNALS:
    void openRequested();
    void quitRequested();
    // The icon was handed to the tray host.
    void shown();

private:
    void rebuildMenu();
    void updateIcon();
    void updateDictationAction();
    void updateVisibility();

    AppModel &m_model;
    QMenu m_menu;
    QSystemTrayIcon m_icon;
    QString m_symbol;
    QPointer<QAction> m_dictationAction;
};
