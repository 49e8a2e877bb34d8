#pragma once

#include "app/APIKeyState.h"
#include "app/AppServices.h"
#include "app/WindowModel.h"
#include "models/AppUpdate.h"
#include "models/CustomDictionaryEntry.h"
#include "app/DictationSession.h"
#include "models/InputLanguageHint.h"
#include "models/PermissionState.h"
#include "models/TranscriptEntry.h"
#include "models/TranscriptionMode.h"
#include "models/TranslationLanguage.h"
#include "models/TypingStatistics.h"

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <exception>
#include <optional>

struct DictationRequest;

// The single observable controller: preferences, the dictation session, status
// lines, the custom dictionary, history and statistics, the API key and input
// language tracking. Lives on the main thread; every property notifies only when
// its value really changes.
class AppModel : public WindowModel
{
    Q_OBJECT

public:
    explicit AppModel(AppServices services, QObject *parent = nullptr);
    ~AppModel() override;

    // ---- services and constants
    [[nodiscard]] const AppServices &services() const { return m_services; }
    [[nodiscard]] QString triggerDisplay() const override { return m_triggerDisplay; }

    // ---- observable state
    [[nodiscard]] QString apiKeyDraft() const override { return m_apiKey.draft; }
    void setApiKeyDraft(const QString &draft) override;
    [[nodiscard]] QList<CustomDictionaryEntry> customDictionaryEntries() const override { return m_customDictionaryEntries; }
    [[nodiscard]] QList<TranscriptEntry> recentTranscripts() const override { return m_recentTranscripts; }
    [[nodiscard]] TypingStatistics typingStatistics() const override { return m_typingStatistics; }
    [[nodiscard]] const std::optional<AppUpdate> &availableAppUpdate() const { return m_availableAppUpdate; }
    [[nodiscard]] bool hasAvailableAppUpdate() const override { return m_availableAppUpdate.has_value(); }
    [[nodiscard]] QString statusMessage() const override { return m_statusMessage; }
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] bool isBusy() const override { return m_isBusy; }
    [[nodiscard]] bool isRecording() const override { return m_isRecording; }
    [[nodiscard]] bool hasStoredAPIKey() const override { return m_apiKey.hasStoredKey; }
    [[nodiscard]] const std::optional<QString> &triggerRegistrationError() const { return m_triggerRegistrationError; }
    [[nodiscard]] bool accessibilityPermissionGranted() const override { return m_accessibilityPermissionGranted; }
    [[nodiscard]] PermissionState microphonePermissionState() const { return m_microphonePermissionState; }
    [[nodiscard]] const std::optional<InputLanguageHint> &currentInputLanguageHint() const { return m_currentInputLanguageHint; }

    // ---- preferences (every set persists at once)
    [[nodiscard]] bool shouldPolishTranscript() const override { return m_shouldPolishTranscript; }
    void setShouldPolishTranscript(bool value) override;
    [[nodiscard]] QString polishPrompt() const override { return m_polishPrompt; }
    void setPolishPrompt(const QString &value) override;
    [[nodiscard]] TranscriptionMode transcriptionMode() const { return m_transcriptionMode; }
    void setTranscriptionMode(TranscriptionMode value);
    [[nodiscard]] bool autoCopyTranscript() const override { return m_autoCopyTranscript; }
    void setAutoCopyTranscript(bool value) override;
    [[nodiscard]] bool showMenuBarIcon() const override { return m_showMenuBarIcon; }
    void setShowMenuBarIcon(bool value) override;
    [[nodiscard]] QString translationLanguageCode() const override { return m_translationLanguageCode; }
    void setTranslationLanguageCode(const QString &value) override;
    [[nodiscard]] QString triggerKey() const override;
    void setTriggerKey(const QString &id) override;
    [[nodiscard]] QString serviceAddress() const override;
    void setServiceAddress(const QString &address) override;

    // ---- services start (idempotent)
    void startAppServices() override;

    // ---- dictation session
    QCoro::Task<> globalPressToTalkBegan();
    QCoro::Task<> globalPressToTalkEnded();
    QCoro::Task<> globalToggleRecordingBegan();
    QCoro::Task<> globalToggleRecordingEnded();
    // From `quorla dictation start|stop|toggle|cancel`: start and stop act as the trigger
    // going down and up; stop, toggle and cancel end whatever recording is running.
    QCoro::Task<> commandPressToTalkBegan();
    QCoro::Task<> commandPressToTalkEnded();
    QCoro::Task<> commandToggleRecordingRequested();
    // Ends the recording and deletes it unsent; nothing while transcribing.
    void cancelRecording();
    // A recording started from Quorla's own window.
    QCoro::Task<> startManualRecording() override;
    QCoro::Task<> stopRecordingAndTranscribe() override;
    Q_INVOKABLE void presentError(const QString &message);
    [[nodiscard]] QString localizedMessage(const std::exception &error) const;
    [[nodiscard]] QString localizedMessage(const std::exception_ptr &error) const;

    // ---- status and permissions
    void refreshPermissions(bool refreshInputLanguage) override;
    void requestAccessibilityAccess() override;
    [[nodiscard]] QString defaultStatusMessage() const override;
    [[nodiscard]] bool requiresOnboarding() const override;
    void openSettingsPane(const QString &anchor) override;

    // ---- custom dictionary
    bool addCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                  bool replacementEnabled);
    void submitCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                     bool replacementEnabled) override;
    void removeCustomDictionaryEntry(const CustomDictionaryEntry &entry) override;
    void clearCustomDictionary() override;

    // ---- history and statistics
    void recordInsertedTranscript(const QString &transcript);
    void copyTranscript(const TranscriptEntry &entry) override;
    void clearTranscript() override;

    // ---- API key
    void saveAPIKey() override;
    void clearAPIKey() override;
    // The key for a request; throws QuorlaError::missingAPIKey or the store's error.
    QString validatedAPIKey();

    // ---- input language
    void handleInputSourceChange(const QDateTime &now);
    [[nodiscard]] QString translationLanguageSummary() const override;

    // ---- updates
    QCoro::Task<> checkForAppUpdate() override;
    // "Check for Updates...": no update framework here, so a newer release opens in the browser.
    QCoro::Task<> checkForUpdatesAndOpenDownload();
    void checkForUpdates() override;
    void quitApplication() override;

    // ---- for QML
    [[nodiscard]] QVariant availableAppUpdateVariant() const override;
    [[nodiscard]] QString errorMessageText() const override { return m_errorMessage.value_or(QString()); }
    [[nodiscard]] QString triggerRegistrationErrorText() const override { return m_triggerRegistrationError.value_or(QString()); }
    [[nodiscard]] QString microphonePermissionStateName() const override;
    [[nodiscard]] QVariant currentInputLanguageHintVariant() const override;
    [[nodiscard]] QString transcriptionModeName() const override { return rawValue(m_transcriptionMode); }
    void setTranscriptionModeName(const QString &raw) override { setTranscriptionMode(transcriptionModeFromRawValue(raw)); }

private:
    // Lets tests seed state that only a finished dictation produces.
    friend struct AppModelTestAccess;

    // Assigns and notifies only when the value differs.
    template <typename T>
    bool assign(T &field, const T &value, void (AppModel::*changed)())
    {
        if (field == value)
            return false;
        field = value;
        Q_EMIT(this->*changed)();
        return true;
    }

    void readPreferences();
    void setStatusMessage(const QString &message);
    void setErrorMessage(const std::optional<QString> &message);
    void setIsBusy(bool value);
    void setIsRecording(bool value);
    void setHasStoredAPIKey(bool value);
    void setTriggerRegistrationError(const std::optional<QString> &message);
    void setAccessibilityPermissionGranted(bool value);
    void setMicrophonePermissionState(PermissionState value);
    void setCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries);
    void setRecentTranscripts(const QList<TranscriptEntry> &entries);
    void setTypingStatistics(const TypingStatistics &statistics);
    void setAvailableAppUpdate(const std::optional<AppUpdate> &update);
    void setCurrentInputLanguageHint(const std::optional<InputLanguageHint> &hint);

    [[nodiscard]] QString recordingStatusMessage(const DictationSession &session) const;
    void persistCustomDictionaryEntries();
    [[nodiscard]] QList<CustomDictionaryEntry> loadCustomDictionaryEntries() const;
    void persistTypingStatistics();
    void loadStoredAPIKeyMetadata();
    void refreshCurrentInputLanguageHint();
    void startObservingInputSourceChanges();
    static QString currentAppVersion();
    QCoro::Task<> startRecording(DictationSource source);
    bool promoteActiveHoldSessionToToggle();
    // What the dictation pipeline gets, taken from the settings and the dictionary now.
    [[nodiscard]] DictationRequest dictationRequest(const QString &recordingPath, const QString &apiKey,
                                                    const std::optional<InputLanguageHint> &language) const;
    void rememberSavedAPIKey(const std::optional<QString> &key);
    // Holding the trigger can make the desktop switch the input source: a switch this
    // close to a hold's start was caused by the trigger, not by the user.
    static constexpr qint64 triggerCausedInputSourceChangeMs = 500;
    static bool isTriggerCausedInputSourceChange(const QDateTime &earlier, const QDateTime &later)
    {
        const qint64 elapsed = earlier.msecsTo(later);
        return elapsed >= 0 && elapsed <= triggerCausedInputSourceChangeMs;
    }
    QCoro::Task<InsertionOutcome> insertTranscriptIfNeeded(QString transcript, std::optional<DictationSession> session);
    [[nodiscard]] QString finalStatusMessage(const std::optional<DictationSession> &session,
                                             const InsertionOutcome &outcome) const;

    AppServices m_services;
    QString m_triggerDisplay;

    APIKeyState m_apiKey;
    QList<CustomDictionaryEntry> m_customDictionaryEntries;
    QList<TranscriptEntry> m_recentTranscripts;
    TypingStatistics m_typingStatistics;
    std::optional<AppUpdate> m_availableAppUpdate;
    QString m_statusMessage;
    std::optional<QString> m_errorMessage;
    bool m_isBusy = false;
    bool m_isRecording = false;
    std::optional<QString> m_triggerRegistrationError;
    bool m_accessibilityPermissionGranted = false;
    PermissionState m_microphonePermissionState = PermissionState::notDetermined;
    std::optional<InputLanguageHint> m_currentInputLanguageHint;
    bool m_shouldPolishTranscript = false;
    QString m_polishPrompt;
    TranscriptionMode m_transcriptionMode = TranscriptionMode::fast;
    bool m_autoCopyTranscript = true;
    bool m_showMenuBarIcon = false;
    QString m_translationLanguageCode;

    bool m_hasStartedServices = false;
    std::optional<DictationSession> m_activeSession;
    bool m_isGlobalTriggerHeld = false;
    bool m_isToggleRecordingRequested = false;
    bool m_isCommandRecordingRequested = false;
    bool m_isObservingInputSource = false;
    std::optional<QDateTime> m_lastInputSourceChangeAt;
    std::optional<QDateTime> m_lastRecordingStartedAt;
};
