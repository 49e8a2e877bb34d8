#include "TrayIcon.h"

#include "app/AppModel.h"
#include "views/menu/RecentDictationMenuItem.h"

#include <QCursor>

TrayIcon::TrayIcon(AppModel &model, QObject *parent)
    : QObject(parent)
    , m_model(model)
{
    m_icon.setToolTip(QStringLiteral("Quorla"));
    m_icon.setContextMenu(&m_menu);
    // XEmbed trays report a left click without opening the menu: open it ourselves.
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_menu.popup(QCursor::pos());
    });
    connect(&m_model, &AppModel::recentTranscriptsChanged, this, &TrayIcon::rebuildMenu);
    connect(&m_model, &AppModel::isRecordingChanged, this, &TrayIcon::updateIcon);
    connect(&m_model, &AppModel::isRecordingChanged, this, &TrayIcon::updateDictationAction);
    connect(&m_model, &AppModel::isBusyChanged, this, &TrayIcon::updateDictationAction);
    connect(&m_model, &AppModel::showMenuBarIconChanged, this, &TrayIcon::updateVisibility);
    rebuildMenu();
    updateIcon();
    updateVisibility();
}

void TrayIcon::rebuildMenu()
{
    m_menu.clear();
    m_menu.addSection(QStringLiteral("Recent"));
    const auto &entries = m_model.recentTranscripts();
    if (entries.isEmpty())
        m_menu.addAction(QStringLiteral("No recent dictations"))->setEnabled(false);
    for (qsizetype i = 0; i < std::min<qsizetype>(entries.size(), RecentDictationMenuItem::maxRecentMenuEntries); ++i) {
        const TranscriptEntry entry = entries[i];
        // The time sits in the menu's right-hand column.
        const QString label = RecentDictationMenuItem::titleText(entry.text) + QLatin1Char('\t')
                            + RecentDictationMenuItem::timeText(entry.createdAt);
        QAction *action = m_menu.addAction(label);
        action->setToolTip(entry.text);
        connect(action, &QAction::triggered, this, [this, entry] { m_model.copyTranscript(entry); });
    }
    m_menu.addSeparator();
    // The window's own recording, without opening the window.
    m_dictationAction = m_menu.addAction(QString());
    // Queued: a finished dictation rebuilds this menu, which must not happen inside the click.
    connect(
        m_dictationAction, &QAction::triggered, this,
        [this] {
            if (m_model.isRecording())
                m_model.stopRecordingAndTranscribe();
            else
                m_model.startManualRecording();
        },
        Qt::QueuedConnection);
    updateDictationAction();
    connect(m_menu.addAction(QStringLiteral("Open Quorla")), &QAction::triggered, this, &TrayIcon::openRequested);
    connect(m_menu.addAction(QStringLiteral("Quit")), &QAction::triggered, this, &TrayIcon::quitRequested);
}

void TrayIcon::updateIcon()
{
    m_symbol = m_model.isRecording() ? QStringLiteral("waveform.badge.microphone") : QStringLiteral("waveform.mid");
    // Full colour rather than a monochrome symbol: a tray panel may be light or dark.
    m_icon.setIcon(QIcon(m_model.isRecording() ? QStringLiteral(":/Quorla/app-icon-recording.svg")
                                               : QStringLiteral(":/Quorla/app-icon.svg")));
    m_icon.setToolTip(m_model.isRecording() ? QStringLiteral("Quorla: recording") : QStringLiteral("Quorla"));
}

void TrayIcon::updateDictationAction()
{
    if (!m_dictationAction)
        return;
    m_dictationAction->setText(m_model.isRecording() ? QStringLiteral("Stop Dictation")
                                                     : QStringLiteral("Start Dictation"));
    m_dictationAction->setEnabled(m_model.isRecording() || !m_model.isBusy());
}

void TrayIcon::updateVisibility()
{
    const bool wanted = m_model.showMenuBarIcon();
    if (wanted == m_icon.isVisible())
        return;
    m_icon.setVisible(wanted);
    if (wanted)
        Q_EMIT shown();
}
