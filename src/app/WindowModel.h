#pragma once

#include "models/CustomDictionaryEntry.h"
#include "models/TranscriptEntry.h"
#include "models/TypingStatistics.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <QVariant>
#include <optional>

struct PlatformWords;

// What the main window shows and asks of the application: AppModel in the process
// that dictates, a mirror of it in the window's own process. Every action is a
// request whose outcome arrives as property changes, so neither side waits on the other.
class WindowModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString apiKeyDraft READ apiKeyDraft WRITE setApiKeyDraft NOTIFY apiKeyDraftChanged)
    Q_PROPERTY(QList<CustomDictionaryEntry> customDictionaryEntries READ customDictionaryEntries NOTIFY customDictionaryEntriesChanged)
    Q_PROPERTY(QList<TranscriptEntry> recentTranscripts READ recentTranscripts NOTIFY recentTranscriptsChanged)
    Q_PROPERTY(TypingStatistics typingStatistics READ typingStatistics NOTIFY typingStatisticsChanged)
    Q_PROPERTY(QVariant availableAppUpdate READ availableAppUpdateVariant NOTIFY availableAppUpdateChanged)
    Q_PROPERTY(bool hasAvailableAppUpdate READ hasAvailableAppUpdate NOTIFY availableAppUpdateChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(QString errorMessage READ errorMessageText NOTIFY errorMessageChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isBusyChanged)
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(bool hasStoredAPIKey READ hasStoredAPIKey NOTIFY hasStoredAPIKeyChanged)
    Q_PROPERTY(QString triggerRegistrationError READ triggerRegistrationErrorText NOTIFY triggerRegistrationErrorChanged)
    Q_PROPERTY(bool accessibilityPermissionGranted READ accessibilityPermissionGranted NOTIFY accessibilityPermissionGrantedChanged)
    Q_PROPERTY(QString microphonePermissionState READ microphonePermissionStateName NOTIFY microphonePermissionStateChanged)
    Q_PROPERTY(QVariant currentInputLanguageHint READ currentInputLanguageHintVariant NOTIFY currentInputLanguageHintChanged)
    Q_PROPERTY(bool shouldPolishTranscript READ shouldPolishTranscript WRITE setShouldPolishTranscript NOTIFY shouldPolishTranscriptChanged)
    Q_PROPERTY(QString polishPrompt READ polishPrompt WRITE setPolishPrompt NOTIFY polishPromptChanged)
    Q_PROPERTY(QString transcriptionMode READ transcriptionModeName WRITE setTranscriptionModeName NOTIFY transcriptionModeChanged)
    Q_PROPERTY(bool autoCopyTranscript READ autoCopyTranscript WRITE setAutoCopyTranscript NOTIFY autoCopyTranscriptChanged)
    Q_PROPERTY(bool showMenuBarIcon READ showMenuBarIcon WRITE setShowMenuBarIcon NOTIFY showMenuBarIconChanged)
    Q_PROPERTY(QString translationLanguageCode READ translationLanguageCode WRITE setTranslationLanguageCode NOTIFY translationLanguageCodeChanged)
    Q_PROPERTY(QString triggerDisplay READ triggerDisplay NOTIFY triggerDisplayChanged)
    Q_PROPERTY(QString triggerKey READ triggerKey WRITE setTriggerKey NOTIFY triggerDisplayChanged)
    Q_PROPERTY(QVariantList triggerKeyChoices READ triggerKeyChoices CONSTANT)
    Q_PROPERTY(QString defaultStatusMessage READ defaultStatusMessage NOTIFY statusInputsChanged)
    Q_PROPERTY(bool requiresOnboarding READ requiresOnboarding NOTIFY statusInputsChanged)
    Q_PROPERTY(QString translationLanguageSummary READ translationLanguageSummary NOTIFY translationLanguageCodeChanged)
    Q_PROPERTY(QString serviceAddress READ serviceAddress WRITE setServiceAddress NOTIFY serviceAddressChanged)

public:
    explicit WindowModel(const PlatformWords &words, QObject *parent = nullptr);

    // The desktop's sentences, the same in either process.
    [[nodiscard]] const PlatformWords &words() const { return *m_words; }

    // ---- observable state
    [[nodiscard]] virtual QString apiKeyDraft() const = 0;
    virtual void setApiKeyDraft(const QString &draft) = 0;
    [[nodiscard]] virtual QList<CustomDictionaryEntry> customDictionaryEntries() const = 0;
    [[nodiscard]] virtual QList<TranscriptEntry> recentTranscripts() const = 0;
    [[nodiscard]] virtual TypingStatistics typingStatistics() const = 0;
    [[nodiscard]] virtual QVariant availableAppUpdateVariant() const = 0;
    [[nodiscard]] virtual bool hasAvailableAppUpdate() const = 0;
    [[nodiscard]] virtual QString statusMessage() const = 0;
    [[nodiscard]] virtual QString errorMessageText() const = 0;
    [[nodiscard]] virtual bool isBusy() const = 0;
    [[nodiscard]] virtual bool isRecording() const = 0;
    [[nodiscard]] virtual bool hasStoredAPIKey() const = 0;
    [[nodiscard]] virtual QString triggerRegistrationErrorText() const = 0;
    [[nodiscard]] virtual bool accessibilityPermissionGranted() const = 0;
    [[nodiscard]] virtual QString microphonePermissionStateName() const = 0;
    [[nodiscard]] virtual QVariant currentInputLanguageHintVariant() const = 0;
    [[nodiscard]] virtual QString triggerDisplay() const = 0;
    [[nodiscard]] virtual QString defaultStatusMessage() const = 0;
    [[nodiscard]] virtual bool requiresOnboarding() const = 0;
    [[nodiscard]] virtual QString translationLanguageSummary() const = 0;

    // ---- preferences (every set persists at once)
    [[nodiscard]] virtual bool shouldPolishTranscript() const = 0;
    virtual void setShouldPolishTranscript(bool value) = 0;
    [[nodiscard]] virtual QString polishPrompt() const = 0;
    virtual void setPolishPrompt(const QString &value) = 0;
    [[nodiscard]] virtual QString transcriptionModeName() const = 0;
    virtual void setTranscriptionModeName(const QString &raw) = 0;
    [[nodiscard]] virtual bool autoCopyTranscript() const = 0;
    virtual void setAutoCopyTranscript(bool value) = 0;
    [[nodiscard]] virtual bool showMenuBarIcon() const = 0;
    virtual void setShowMenuBarIcon(bool value) = 0;
    [[nodiscard]] virtual QString translationLanguageCode() const = 0;
    virtual void setTranslationLanguageCode(const QString &value) = 0;
    // The TriggerKey id; takes effect at once. An unknown id means the default key.
    [[nodiscard]] virtual QString triggerKey() const = 0;
    virtual void setTriggerKey(const QString &id) = 0;
    // The OpenAI-compatible base URL as typed; blank means the default service.
    [[nodiscard]] virtual QString serviceAddress() const = 0;
    virtual void setServiceAddress(const QString &address) = 0;
    // Every TriggerKey as {id, displayName}, for a settings list.
    [[nodiscard]] static QVariantList triggerKeyChoices();

    // ---- requests
    Q_INVOKABLE virtual void startAppServices() = 0;
    Q_INVOKABLE virtual void refreshPermissions(bool refreshInputLanguage) = 0;
    Q_INVOKABLE virtual void requestAccessibilityAccess() = 0;
    Q_INVOKABLE virtual void openSettingsPane(const QString &anchor) = 0;
    Q_INVOKABLE virtual void saveAPIKey() = 0;
    Q_INVOKABLE virtual void clearAPIKey() = 0;
    Q_INVOKABLE virtual void clearCustomDictionary() = 0;
    Q_INVOKABLE virtual void clearTranscript() = 0;
    Q_INVOKABLE virtual void checkForUpdates() = 0;
    // Ends the whole application, not only the window.
    Q_INVOKABLE virtual void quitApplication() = 0;
    // Announces customDictionaryEntryAdded when the entry was taken.
    virtual void submitCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                             bool replacementEnabled) = 0;
    virtual void removeCustomDictionaryEntry(const CustomDictionaryEntry &entry) = 0;
    virtual void copyTranscript(const TranscriptEntry &entry) = 0;
    virtual QCoro::Task<> startManualRecording() = 0;
    virtual QCoro::Task<> stopRecordingAndTranscribe() = 0;
    virtual QCoro::Task<> checkForAppUpdate() = 0;

Q_SIGNALS:
    void apiKeyDraftChanged();
    void customDictionaryEntriesChanged();
    void recentTranscriptsChanged();
    void typingStatisticsChanged();
    void availableAppUpdateChanged();
    void statusMessageChanged();
    void errorMessageChanged();
    void isBusyChanged();
    void isRecordingChanged();
    void hasStoredAPIKeyChanged();
    void triggerRegistrationErrorChanged();
    void accessibilityPermissionGrantedChanged();
    void microphonePermissionStateChanged();
    void currentInputLanguageHintChanged();
    void shouldPolishTranscriptChanged();
    void polishPromptChanged();
    void transcriptionModeChanged();
    void autoCopyTranscriptChanged();
    void showMenuBarIconChanged();
    void translationLanguageCodeChanged();
    void triggerDisplayChanged();
    void serviceAddressChanged();
    // Something the idle text or the onboarding condition depends on changed.
    void statusInputsChanged();
    // A submitted dictionary entry was taken (a refused one leaves an error message).
    void customDictionaryEntryAdded();

private:
    const PlatformWords *m_words;
};
