#pragma once

#include "views/common/ModelPresenter.h"

#include <QString>
#include <QVariantList>

// What the Home page shows: usage metrics, the time saved, the history rows and the
// sentences that name the trigger key.
class HomePresenter : public ModelPresenter
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString characterCountText READ characterCountText NOTIFY statisticsChanged)
    Q_PROPERTY(QString wordCountText READ wordCountText NOTIFY statisticsChanged)
    Q_PROPERTY(QString estimatedTimeSavedText READ estimatedTimeSavedText NOTIFY statisticsChanged)
    Q_PROPERTY(bool hasUsage READ hasUsage NOTIFY statisticsChanged)
    Q_PROPERTY(QString transcriptSummaryText READ transcriptSummaryText NOTIFY transcriptsChanged)
    Q_PROPERTY(QVariantList transcripts READ transcripts NOTIFY transcriptsChanged)
    Q_PROPERTY(QString triggerDisplay READ triggerDisplay NOTIFY shortcutsChanged)
    Q_PROPERTY(QString toggleDisplay READ toggleDisplay NOTIFY shortcutsChanged)
    Q_PROPERTY(QString toggleFirstKey READ toggleFirstKey NOTIFY shortcutsChanged)
    Q_PROPERTY(QString toggleSecondKey READ toggleSecondKey NOTIFY shortcutsChanged)
    Q_PROPERTY(QString pushToTalkHelpText READ pushToTalkHelpText NOTIFY shortcutsChanged)
    Q_PROPERTY(QString noUsageTail READ noUsageTail NOTIFY shortcutsChanged)
    Q_PROPERTY(QString noUsageText READ noUsageText NOTIFY shortcutsChanged)
    Q_PROPERTY(QString followsInputLanguageText READ followsInputLanguageText NOTIFY modelChanged)
    Q_PROPERTY(QString inputLanguageText READ inputLanguageText NOTIFY inputLanguageChanged)
    Q_PROPERTY(QString recordButtonText READ recordButtonText NOTIFY recordingChanged)
    Q_PROPERTY(bool canToggleRecording READ canToggleRecording NOTIFY recordingChanged)

public:
    using ModelPresenter::ModelPresenter;

    [[nodiscard]] QString characterCountText() const;
    [[nodiscard]] QString wordCountText() const;
    [[nodiscard]] QString estimatedTimeSavedText() const;
    [[nodiscard]] bool hasUsage() const;
    [[nodiscard]] QString transcriptSummaryText() const;
    // One map per history entry: text, timeText, isLatest.
    [[nodiscard]] QVariantList transcripts() const;
    [[nodiscard]] QString triggerDisplay() const;
    [[nodiscard]] QString toggleDisplay() const;
    // The toggle's key caps: the trigger and "Space", or the desktop's chord and nothing.
    [[nodiscard]] QString toggleFirstKey() const;
    [[nodiscard]] QString toggleSecondKey() const;
    [[nodiscard]] QString pushToTalkHelpText() const;
    // The no-usage sentence after its key cap (the toggle's first), and the whole for screen readers.
    [[nodiscard]] QString noUsageTail() const;
    [[nodiscard]] QString noUsageText() const;
    [[nodiscard]] QString followsInputLanguageText() const;
    [[nodiscard]] QString inputLanguageText() const;
    [[nodiscard]] QString recordButtonText() const;
    [[nodiscard]] bool canToggleRecording() const;

    Q_INVOKABLE void copyTranscript(int index);
    Q_INVOKABLE void clearTranscripts();
    // Starts a recording from the window, or stops the running one and transcribes it.
    Q_INVOKABLE void toggleRecording();

Q_SIGNALS:
    void statisticsChanged();
    void transcriptsChanged();
    void inputLanguageChanged();
    void recordingChanged();
    void shortcutsChanged();

protected:
    void observe(AppModel &model) override;

private:
    // The desktop binds the toggle as a chord of its own.
    [[nodiscard]] bool hasToggleShortcut() const;
};
