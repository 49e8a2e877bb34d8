#pragma once

#include "app/APIKeyState.h"
#include "app/AppServices.h"
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
#include <QTimer>
#include <QVariant>
#include <exception>
#include <optional>

struct DictationRequest;

// The single observable controller: preferences, the dictation session, status
// lines, the custom dictionary, history and statistics, the API key and input
// language tracking. Lives on the main thread; every property notifies only when
// its value really changes.
class AppModel : public QObject
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
    Q_PROPERTY(bool isKeychainLocked READ isKeychainLocked NOTIFY isKeychainLockedChanged)
    Q_PROPERTY(QString triggerRegistrationError READ triggerRegistrationErrorText NOTIFY triggerRegistrationErrorChanged)
    Q_PROPERTY(bool accessibilityPermissionGranted READ accessibilityPermissionGranted NOTIFY accessibilityPermissionGrantedChanged)
    Q_PROPERTY(QString microphonePermissionState READ microphonePermissionStateName NOTIFY microphonePermissionStateChanged)
    Q_PROPERTY(QVariant currentInputLanguageHint READ currentInputLanguageHintVariant NOTIFY currentInputLanguageHintChanged)
    Q_PROPERTY(bool shouldPolishTranscript READ shouldPolishTranscript WRITE setShouldPolishTranscript NOTIFY shouldPolishTranscriptChanged)
    Q_PROPERTY(QString polishPrompt READ polishPrompt WRITE setPolishPrompt NOTIFY polishPromptChanged)
    Q_PROPERTY(QString transcriptionMode READ transcriptionModeName WRITE setTranscriptionModeName NOTIFY transcriptionModeChanged)
    Q_PROPERTY(bool autoCopyTranscript READ autoCopyTranscript WRITE setAutoCopyTranscript NOTIFY autoCopyTranscriptChanged)
    Q_PROPERTY(bool showMenuBarIcon READ showMenuBarIcon WRITE setShowMenuBarIcon NOTIFY showMenuBarIconChanged)
    Q_PROPERTY(bool startListeningOnTriggerDown READ startListeningOnTriggerDown WRITE setStartListeningOnTriggerDown NOTIFY startListeningOnTriggerDownChanged)
    Q_PROPERTY(QString translationLanguageCode READ translationLanguageCode WRITE setTranslationLanguageCode NOTIFY translationLanguageCodeChanged)
    Q_PROPERTY(QString triggerDisplay READ triggerDisplay NOTIFY triggerDisplayChanged)
    Q_PROPERTY(QString toggleDisplay READ toggleDisplay NOTIFY triggerDisplayChanged)
    Q_PROPERTY(QString triggerKey READ triggerKey WRITE setTriggerKey NOTIFY triggerDisplayChanged)
    Q_PROPERTY(QVariantList triggerKeyChoices READ triggerKeyChoices CONSTANT)
    Q_PROPERTY(QString defaultStatusMessage READ defaultStatusMessage NOTIFY statusInputsChanged)
    Q_PROPERTY(bool requiresOnboarding READ requiresOnboarding NOTIFY statusInputsChanged)
    Q_PROPERTY(QString translationLanguageSummary READ translationLanguageSummary NOTIFY translationLanguageCodeChanged)
    Q_PROPERTY(QString serviceAddress READ serviceAddress WRITE setServiceAddress NOTIFY serviceAddressChanged)

public:
    explicit AppModel(AppServices services, QObject *parent = nullptr);
    ~AppModel() override;

    // ---- services and constants
    [[nodiscard]] const AppServices &services() const { return m_services; }
    [[nodiscard]] const QString &triggerDisplay() const { return m_triggerDisplay; }
    // The toggle's own shortcut where the desktop binds one apart from the trigger; empty
    // where the toggle is trigger + Space.
    [[nodiscard]] const QString &toggleShortcutDisplay() const { return m_toggleShortcutDisplay; }
    // The toggle as the user presses it: "Fn + Space", or the desktop's own chord.
    [[nodiscard]] QString toggleDisplay() const;
    // What ends a toggle dictation besides the trigger: Space, or the toggle's own chord.
    [[nodiscard]] QString toggleStopDisplay() const;

    // ---- observable state
    [[nodiscard]] const QString &apiKeyDraft() const { return m_apiKey.draft; }
    void setApiKeyDraft(const QString &draft);
    [[nodiscard]] const QList<CustomDictionaryEntry> &customDictionaryEntries() const { return m_customDictionaryEntries; }
    [[nodiscard]] const QList<TranscriptEntry> &recentTranscripts() const { return m_recentTranscripts; }
    [[nodiscard]] const TypingStatistics &typingStatistics() const { return m_typingStatistics; }
    [[nodiscard]] const std::optional<AppUpdate> &availableAppUpdate() const { return m_availableAppUpdate; }
    [[nodiscard]] bool hasAvailableAppUpdate() const { return m_availableAppUpdate.has_value(); }
    [[nodiscard]] const QString &statusMessage() const { return m_statusMessage; }
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] bool isBusy() const { return m_isBusy; }
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    [[nodiscard]] bool hasStoredAPIKey() const { return m_apiKey.hasStoredKey; }
    // The credential store answered "locked": the saved key is kept but can't be read.
    [[nodiscard]] bool isKeychainLocked() const { return m_apiKey.keychainLocked; }
    [[nodiscard]] const std::optional<QString> &triggerRegistrationError() const { return m_triggerRegistrationError; }
    [[nodiscard]] bool accessibilityPermissionGranted() const { return m_accessibilityPermissionGranted; }
    [[nodiscard]] PermissionState microphonePermissionState() const { return m_microphonePermissionState; }
    [[nodiscard]] const std::optional<InputLanguageHint> &currentInputLanguageHint() const { return m_currentInputLanguageHint; }

    // ---- preferences (every set persists at once)
    [[nodiscard]] bool shouldPolishTranscript() const { return m_shouldPolishTranscript; }
    void setShouldPolishTranscript(bool value);
    [[nodiscard]] const QString &polishPrompt() const { return m_polishPrompt; }
    void setPolishPrompt(const QString &value);
    [[nodiscard]] TranscriptionMode transcriptionMode() const { return m_transcriptionMode; }
    void setTranscriptionMode(TranscriptionMode value);
    [[nodiscard]] bool autoCopyTranscript() const { return m_autoCopyTranscript; }
    void setAutoCopyTranscript(bool value);
    [[nodiscard]] bool showMenuBarIcon() const { return m_showMenuBarIcon; }
    void setShowMenuBarIcon(bool value);
    // Open the microphone as the trigger goes down, so the first syllable is kept.
    [[nodiscard]] bool startListeningOnTriggerDown() const { return m_startListeningOnTriggerDown; }
    void setStartListeningOnTriggerDown(bool value);
    [[nodiscard]] const QString &translationLanguageCode() const { return m_translationLanguageCode; }
    void setTranslationLanguageCode(const QString &value);
    // The TriggerKey id; takes effect at once. An unknown id means the default key.
    [[nodiscard]] QString triggerKey() const;
    void setTriggerKey(const QString &id);
    // Every TriggerKey as {id, displayName}, for a settings list.
    [[nodiscard]] static QVariantList triggerKeyChoices();
    // The OpenAI-compatible base URL as typed; blank means the default service.
    [[nodiscard]] QString serviceAddress() const;
    void setServiceAddress(const QString &address);

    // ---- services start (idempotent)
    Q_INVOKABLE void startAppServices();
    // True once launch has asked the keyring whether a key is saved.
    [[nodiscard]] bool hasCheckedStoredAPIKey() const { return m_hasCheckedStoredAPIKey; }

    // ---- dictation session
    QCoro::Task<> globalPressToTalkBegan();
    QCoro::Task<> globalPressToTalkEnded();
    QCoro::Task<> globalToggleRecordingBegan();
    QCoro::Task<> globalToggleRecordingEnded();
    // The held trigger was part of another key's shortcut: the hold's recording, if it
    // started, is deleted unsent, and nothing is shown as an error.
    QCoro::Task<> globalPressToTalkCancelled();
    // From `quorla dictation start|stop|toggle|cancel`: start and stop act as the trigger
    // going down and up; stop, toggle and cancel end whatever recording is running.
    QCoro::Task<> commandPressToTalkBegan();
    QCoro::Task<> commandPressToTalkEnded();
    QCoro::Task<> commandToggleRecordingRequested();
    // Ends the recording and deletes it unsent; nothing while transcribing.
    void cancelRecording();
    // A recording started from Quorla's own window.
    QCoro::Task<> startManualRecording();
    QCoro::Task<> stopRecordingAndTranscribe();
    Q_INVOKABLE void presentError(const QString &message);
    [[nodiscard]] QString localizedMessage(const std::exception &error) const;
    [[nodiscard]] QString localizedMessage(const std::exception_ptr &error) const;

    // ---- status and permissions
    // The accessibility answer arrives later, on the event loop.
    Q_INVOKABLE void refreshPermissions(bool refreshInputLanguage);
    QCoro::Task<> requestAccessibilityAccess();
    [[nodiscard]] QString defaultStatusMessage() const;
    [[nodiscard]] bool requiresOnboarding() const;
    Q_INVOKABLE void openSettingsPane(const QString &anchor);

    // ---- custom dictionary
    bool addCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                  bool replacementEnabled);
    void removeCustomDictionaryEntry(const CustomDictionaryEntry &entry);
    Q_INVOKABLE void clearCustomDictionary();

    // ---- history and statistics
    void recordInsertedTranscript(const QString &transcript);
    void copyTranscript(const TranscriptEntry &entry);
    Q_INVOKABLE void clearTranscript();

    // ---- API key
    Q_INVOKABLE void saveAPIKey();
    Q_INVOKABLE void clearAPIKey();
    // Asks the credential store to unlock, with its own prompt; only on the user's click.
    Q_INVOKABLE void unlockKeychain();
    // The key for a request and what the store said about the saved one; writes
    // nothing. Throws the store's read error.
    [[nodiscard]] QCoro::Task<APIKeyLookup> validatedAPIKey() const;

    // ---- input language
    void handleInputSourceChange(const QDateTime &now);
    [[nodiscard]] QString translationLanguageSummary() const;

    // ---- updates
    QCoro::Task<> checkForAppUpdate();
    // "Check for Updates...": no update framework here, so a newer release opens in the browser.
    QCoro::Task<> checkForUpdatesAndOpenDownload();
    Q_INVOKABLE void checkForUpdates();

    // ---- for QML
    [[nodiscard]] QVariant availableAppUpdateVariant() const;
    [[nodiscard]] QString errorMessageText() const { return m_errorMessage.value_or(QString()); }
    [[nodiscard]] QString triggerRegistrationErrorText() const { return m_triggerRegistrationError.value_or(QString()); }
    [[nodiscard]] QString microphonePermissionStateName() const;
    [[nodiscard]] QVariant currentInputLanguageHintVariant() const;
    [[nodiscard]] QString transcriptionModeName() const { return rawValue(m_transcriptionMode); }
    void setTranscriptionModeName(const QString &raw) { setTranscriptionMode(transcriptionModeFromRawValue(raw)); }

Q_SIGNALS:
    void storedAPIKeyChecked();
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
    void isKeychainLockedChanged();
    void triggerRegistrationErrorChanged();
    void accessibilityPermissionGrantedChanged();
    void microphonePermissionStateChanged();
    void currentInputLanguageHintChanged();
    void shouldPolishTranscriptChanged();
    void polishPromptChanged();
    void transcriptionModeChanged();
    void autoCopyTranscriptChanged();
    void showMenuBarIconChanged();
    void startListeningOnTriggerDownChanged();
    void translationLanguageCodeChanged();
    void triggerDisplayChanged();
    void serviceAddressChanged();
    // Something the idle text or the onboarding condition depends on changed.
    void statusInputsChanged();

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
        Q_EMIT(this->*changed)
        ();
        return true;
    }

    void readPreferences();
    // Takes the monitor's names for the trigger and the toggle; true when they changed.
    bool refreshShortcutDisplay();
    void setStatusMessage(const QString &message);
    void setErrorMessage(const std::optional<QString> &message);
    void setIsBusy(bool value);
    void setIsRecording(bool value);
    void setHasStoredAPIKey(bool value);
    void setIsKeychainLocked(bool value);
    // Runs change, then shows the new idle text if the old one was showing.
    template <typename Change>
    void keepingDefaultStatus(Change change)
    {
        const bool showsDefault = m_statusMessage == defaultStatusMessage();
        change();
        if (showsDefault)
            setStatusMessage(defaultStatusMessage());
    }
    void setTriggerRegistrationError(const std::optional<QString> &message);
    void setAccessibilityPermissionGranted(bool value);
    void setMicrophonePermissionState(PermissionState value);
    void setCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries);
    void setRecentTranscripts(const QList<TranscriptEntry> &entries);
    void setTypingStatistics(const TypingStatistics &statistics);
    void setAvailableAppUpdate(const std::optional<AppUpdate> &update);
    void setCurrentInputLanguageHint(const std::optional<InputLanguageHint> &hint);

    [[nodiscard]] QString recordingStatusMessage(const DictationSession &session) const;
    [[nodiscard]] QString liveRecordingStatusMessage(const DictationSession &session, const QString &language) const;
    void persistCustomDictionaryEntries();
    [[nodiscard]] QList<CustomDictionaryEntry> loadCustomDictionaryEntries() const;
    void persistTypingStatistics();
    QCoro::Task<> loadStoredAPIKeyMetadata();
    QCoro::Task<> checkStoredAPIKeyAtLaunch();
    bool m_hasCheckedStoredAPIKey = false;
    QCoro::Task<> storeAPIKeyDraft();
    QCoro::Task<> removeSavedAPIKey();
    QCoro::Task<> unlockSavedAPIKey();
    // The key for a request, after recording what the lookup learned; throws
    // missingAPIKey or keychainLocked when there is none to use.
    QCoro::Task<QString> apiKeyForRequest();
    void rememberAPIKeyLookup(const APIKeyLookup &lookup);
    // Marks the keychain locked when the error says so.
    void noteKeychainFailure(const std::exception_ptr &error);
    // Shows a failed change of the saved key with `status`; false when nothing failed.
    bool presentedKeychainFailure(const std::exception_ptr &failure, const QString &status);
    void refreshLocalPermissions(bool refreshInputLanguage);
    QCoro::Task<> refreshAccessibilityPermission();
    void refreshCurrentInputLanguageHint();
    void startObservingInputSourceChanges();
    static QString currentAppVersion();
    QCoro::Task<> startRecording(DictationSource source);
    bool promoteActiveHoldSessionToToggle();
    // Warms the microphone up for a press that can start a dictation now, and lets it
    // go as soon as the press turns out to be a tap or a shortcut.
    void handleTriggerKeyChanged(bool down);
    // Stops the running recording and deletes its file; no status line.
    void discardRecording();
    // What the dictation pipeline gets, taken from the settings and the dictionary now.
    [[nodiscard]] DictationRequest dictationRequest(const QString &recordingPath, const QString &apiKey,
                                                    const std::optional<InputLanguageHint> &language) const;
    void rememberSavedAPIKey(const std::optional<QString> &key);
    // Live mode: the socket opens with the microphone's warm-up and is handed to the
    // recording that starts, or closed with the warm-up.
    void warmUpLiveTranscription();
    [[nodiscard]] std::shared_ptr<LiveTranscription> liveTranscriptionFor(const DictationSession &session);
    // Holding the trigger can make the desktop switch the input source: a switch this
    // close to a hold's start was caused by the trigger, not by the user.
    static constexpr qint64 triggerCausedInputSourceChangeMs = 500;
    static bool isTriggerCausedInputSourceChange(const QDateTime &earlier, const QDateTime &later)
    {
        const qint64 elapsed = earlier.msecsTo(later);
        return elapsed >= 0 && elapsed <= triggerCausedInputSourceChangeMs;
    }
    QCoro::Task<InsertionOutcome> insertTranscriptIfNeeded(QString transcript, std::optional<DictationSession> session);
    // `copyRefused`: the desktop refused the copy auto-copy asked for.
    [[nodiscard]] QString finalStatusMessage(const InsertionOutcome &outcome, bool copyRefused) const;

    AppServices m_services;
    QString m_triggerDisplay;
    QString m_toggleShortcutDisplay;

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
    bool m_startListeningOnTriggerDown = true;
    QString m_translationLanguageCode;

    bool m_hasStartedServices = false;
    std::optional<DictationSession> m_activeSession;
    bool m_isGlobalTriggerHeld = false;
    bool m_isToggleRecordingRequested = false;
    bool m_isCommandRecordingRequested = false;
    bool m_isObservingInputSource = false;
    std::optional<QDateTime> m_lastInputSourceChangeAt;
    std::optional<QDateTime> m_lastRecordingStartedAt;
    std::shared_ptr<LiveTranscription> m_warmLiveTranscription;
    QTimer m_liveTranscriptionRelease;
};
