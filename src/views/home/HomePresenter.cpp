#include "HomePresenter.h"

#include "app/AppModel.h"
#include "support/PlatformWords.h"
#include "views/home/HomeDisplay.h"
#include "views/menu/RecentDictationMenuItem.h"

#include <QLocale>

void HomePresenter::observe(AppModel &model)
{
    connect(&model, &AppModel::typingStatisticsChanged, this, &HomePresenter::statisticsChanged);
    connect(&model, &AppModel::recentTranscriptsChanged, this, &HomePresenter::transcriptsChanged);
    connect(&model, &AppModel::currentInputLanguageHintChanged, this, &HomePresenter::inputLanguageChanged);
    connect(&model, &AppModel::isRecordingChanged, this, &HomePresenter::recordingChanged);
    connect(&model, &AppModel::isBusyChanged, this, &HomePresenter::recordingChanged);
    connect(&model, &AppModel::triggerDisplayChanged, this, &HomePresenter::shortcutsChanged);
    // Bindings read before the model arrived are stale now.
    Q_EMIT statisticsChanged();
    Q_EMIT transcriptsChanged();
    Q_EMIT inputLanguageChanged();
    Q_EMIT recordingChanged();
    Q_EMIT shortcutsChanged();
}

QString HomePresenter::characterCountText() const
{
    return model() ? QString::number(model()->typingStatistics().typedCharacterCount) : QString();
}

QString HomePresenter::wordCountText() const
{
    return model() ? QString::number(model()->typingStatistics().typedWordCount) : QString();
}

QString HomePresenter::estimatedTimeSavedText() const
{
    return HomeDisplay::estimatedTimeSavedText(model() ? model()->typingStatistics().typedWordCount : 0);
}

bool HomePresenter::hasUsage() const
{
    return model() && model()->typingStatistics().typedCharacterCount > 0;
}

QString HomePresenter::transcriptSummaryText() const
{
    return HomeDisplay::transcriptSummaryText(model() ? model()->recentTranscripts().size() : 0);
}

QVariantList HomePresenter::transcripts() const
{
    QVariantList rows;
    if (!model())
        return rows;
    const auto &entries = model()->recentTranscripts();
    for (qsizetype i = 0; i < entries.size(); ++i)
        rows.append(QVariantMap{
            {QStringLiteral("text"), entries[i].text},
            {QStringLiteral("timeText"), RecentDictationMenuItem::timeText(entries[i].createdAt)},
            {QStringLiteral("isLatest"), i == 0},
        });
    return rows;
}

QString HomePresenter::triggerDisplay() const
{
    return model() ? model()->triggerDisplay() : QString();
}

QString HomePresenter::toggleDisplay() const
{
    return model() ? model()->toggleDisplay() : QString();
}

bool HomePresenter::hasToggleShortcut() const
{
    return model() && !model()->toggleShortcutDisplay().isEmpty();
}

QString HomePresenter::toggleFirstKey() const
{
    return hasToggleShortcut() ? toggleDisplay() : triggerDisplay();
}

QString HomePresenter::toggleSecondKey() const
{
    return hasToggleShortcut() ? QString() : QStringLiteral("Space");
}

QString HomePresenter::pushToTalkHelpText() const
{
    return QStringLiteral("Hold %1 to record, or press %2 to start and stop.").arg(triggerDisplay(), toggleDisplay());
}

QString HomePresenter::noUsageTail() const
{
    const QString tail = QStringLiteral("in a text field to start tracking usage.");
    return hasToggleShortcut() ? tail : QStringLiteral("+ Space ") + tail;
}

QString HomePresenter::noUsageText() const
{
    return QStringLiteral("No inserts yet. Hold %1 in a text field to start tracking usage.").arg(toggleDisplay());
}

QString HomePresenter::followsInputLanguageText() const
{
    return model() ? model()->services().words->followsInputLanguage : QString();
}

QString HomePresenter::inputLanguageText() const
{
    if (!model() || !model()->currentInputLanguageHint())
        return QStringLiteral("Detected automatically");
    return model()->currentInputLanguageHint()->displayName;
}

QString HomePresenter::recordButtonText() const
{
    return model() && model()->isRecording() ? QStringLiteral("Stop & Transcribe") : QStringLiteral("Start Recording");
}

bool HomePresenter::canToggleRecording() const
{
    return model() && (model()->isRecording() || !model()->isBusy());
}

void HomePresenter::copyTranscript(int index)
{
    if (!model() || index < 0 || index >= model()->recentTranscripts().size())
        return;
    model()->copyTranscript(model()->recentTranscripts().at(index));
}

void HomePresenter::clearTranscripts()
{
    if (model())
        model()->clearTranscript();
}

void HomePresenter::toggleRecording()
{
    if (!model())
        return;
    if (model()->isRecording())
        model()->stopRecordingAndTranscribe();
    else
        model()->startManualRecording();
}
