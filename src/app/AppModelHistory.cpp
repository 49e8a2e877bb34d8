// Transcript history and typing statistics.
#include "AppModel.h"

#include "models/TranscriptHistory.h"
#include "platform/Clipboard.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

void AppModel::recordInsertedTranscript(const QString &transcript)
{
    setTypingStatistics(updatedTypingStatistics(m_typingStatistics, transcript));
    persistTypingStatistics();
}

void AppModel::persistTypingStatistics()
{
    m_services.preferences->setInteger(PreferenceKeys::typedCharacterCount, m_typingStatistics.typedCharacterCount);
    m_services.preferences->setInteger(PreferenceKeys::typedWordCount, m_typingStatistics.typedWordCount);
}

void AppModel::copyTranscript(const TranscriptEntry &entry)
{
    // From the tray menu, a Wayland desktop may refuse what it takes from Quorla's window.
    if (!m_services.clipboard->writeText(Clipboard::Selection::clipboard, entry.text, false)
        && !m_services.words->clipboardRefusedStatus.isEmpty()) {
        setStatusMessage(m_services.words->clipboardRefusedStatus);
        return;
    }
    const bool isNewest = !m_recentTranscripts.isEmpty() && m_recentTranscripts.first().id == entry.id;
    setStatusMessage(isNewest ? QStringLiteral("Transcript copied to the clipboard.")
                              : QStringLiteral("Saved transcript copied to the clipboard."));
}

void AppModel::clearTranscript()
{
    // Always announced, even when already empty, so every view resets its selection.
    m_recentTranscripts.clear();
    Q_EMIT recentTranscriptsChanged();
    setErrorMessage(std::nullopt);
    setStatusMessage(defaultStatusMessage());
}
