#include "AppModel.h"

#include "models/QuorlaError.h"
#include "services/AudioRecorder.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "services/ServiceAddress.h"
#include "services/TranslationLanguageCatalog.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformError.h"
#include "support/PlatformWords.h"

#include <QPointer>

AppModel::AppModel(AppServices services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
{
    if (!m_services.words)
        m_services.words = &PlatformWords::current();
    m_triggerDisplay = m_services.pushToTalkMonitor->shortcut().displayString;
    m_toggleShortcutDisplay = m_services.pushToTalkMonitor->shortcut().toggleDisplayString;

    readPreferences();
    m_customDictionaryEntries = loadCustomDictionaryEntries();
    auto &preferences = *m_services.preferences;
    setTypingStatistics({preferences.integerValue(PreferenceKeys::typedCharacterCount).value_or(0),
                         preferences.integerValue(PreferenceKeys::typedWordCount).value_or(0)});

    checkStoredAPIKeyAtLaunch();
    refreshPermissions(true);
    setStatusMessage(defaultStatusMessage());
    startObservingInputSourceChanges();
    // A recording that breaks (input or audio server gone, disk full) ends as a stop
    // would: the stop throws the recorder's fault and the finish-failure step shows it.
    connect(m_services.audioRecorder.get(), &AudioRecorder::recordingFailed, this, [this] {
        if (m_isRecording)
            stopRecordingAndTranscribe();
    });
    m_liveTranscriptionRelease.setSingleShot(true);
    connect(&m_liveTranscriptionRelease, &QTimer::timeout, this, [this] { m_warmLiveTranscription.reset(); });
    connect(m_services.pushToTalkMonitor.get(), &GlobalPushToTalkMonitor::triggerKeyChanged, this,
            &AppModel::handleTriggerKeyChanged);
    connect(m_services.pushToTalkMonitor.get(), &GlobalPushToTalkMonitor::routeChanged, this,
            [this](const std::exception_ptr &failure) {
                refreshShortcutDisplay();
                setTriggerRegistrationError(failure ? std::optional(localizedMessage(failure))
                                                    : m_services.pushToTalkMonitor->installNotice());
                if (!m_isRecording && !m_isBusy)
                    setStatusMessage(defaultStatusMessage());
            });
    // The desktop names its shortcuts once bound, and anew when the user rebinds them.
    connect(m_services.pushToTalkMonitor.get(), &GlobalPushToTalkMonitor::shortcutRenamed, this,
            [this] { keepingDefaultStatus([this] { refreshShortcutDisplay(); }); });
}

AppModel::~AppModel() = default;

void AppModel::readPreferences()
{
    const auto &preferences = *m_services.preferences;
    m_shouldPolishTranscript = preferences.boolValue(PreferenceKeys::shouldPolishTranscript).value_or(false);
    m_polishPrompt = preferences.stringValue(PreferenceKeys::polishPrompt).value_or(QString());
    m_transcriptionMode =
        transcriptionModeFromRawValue(preferences.stringValue(PreferenceKeys::transcriptionMode).value_or(QString()));
    m_translationLanguageCode =
        TranslationLanguageCatalog::normalizedCode(preferences.stringValue(PreferenceKeys::translationLanguageCode))
            .value_or(QString());
    m_autoCopyTranscript = preferences.boolValue(PreferenceKeys::autoCopyTranscript).value_or(true);
    m_showMenuBarIcon = preferences.boolValue(PreferenceKeys::showMenuBarIcon).value_or(false);
    m_startListeningOnTriggerDown = preferences.boolValue(PreferenceKeys::startListeningOnTriggerDown).value_or(true);
}

// ---- preferences

void AppModel::setApiKeyDraft(const QString &draft)
{
    assign(m_apiKey.draft, draft, &AppModel::apiKeyDraftChanged);
}

void AppModel::setShouldPolishTranscript(bool value)
{
    assign(m_shouldPolishTranscript, value, &AppModel::shouldPolishTranscriptChanged);
    m_services.preferences->setBool(PreferenceKeys::shouldPolishTranscript, value);
}

void AppModel::setPolishPrompt(const QString &value)
{
    assign(m_polishPrompt, value, &AppModel::polishPromptChanged);
    if (value.trimmed().isEmpty())
        m_services.preferences->remove(PreferenceKeys::polishPrompt);
    else
        m_services.preferences->setString(PreferenceKeys::polishPrompt, value);
}

void AppModel::setTranscriptionMode(TranscriptionMode value)
{
    assign(m_transcriptionMode, value, &AppModel::transcriptionModeChanged);
    m_services.preferences->setString(PreferenceKeys::transcriptionMode, rawValue(value));
}

void AppModel::setAutoCopyTranscript(bool value)
{
    assign(m_autoCopyTranscript, value, &AppModel::autoCopyTranscriptChanged);
    m_services.preferences->setBool(PreferenceKeys::autoCopyTranscript, value);
}

void AppModel::setShowMenuBarIcon(bool value)
{
    assign(m_showMenuBarIcon, value, &AppModel::showMenuBarIconChanged);
    m_services.preferences->setBool(PreferenceKeys::showMenuBarIcon, value);
}

void AppModel::setStartListeningOnTriggerDown(bool value)
{
    assign(m_startListeningOnTriggerDown, value, &AppModel::startListeningOnTriggerDownChanged);
    m_services.preferences->setBool(PreferenceKeys::startListeningOnTriggerDown, value);
}

void AppModel::setTranslationLanguageCode(const QString &value)
{
    // Observers only ever see the canonical code.
    const QString normalized = TranslationLanguageCatalog::normalizedCode(value).value_or(QString());
    assign(m_translationLanguageCode, normalized, &AppModel::translationLanguageCodeChanged);
    if (normalized.isEmpty())
        m_services.preferences->remove(PreferenceKeys::translationLanguageCode);
    else
        m_services.preferences->setString(PreferenceKeys::translationLanguageCode, normalized);
}

QString AppModel::serviceAddress() const
{
    return m_services.preferences->stringValue(PreferenceKeys::apiBaseURL).value_or(QString());
}

void AppModel::setServiceAddress(const QString &address)
{
    if (address == serviceAddress())
        return;
    // Read at every request, so the next one goes to the new address.
    if (address.trimmed().isEmpty())
        m_services.preferences->remove(PreferenceKeys::apiBaseURL);
    else
        m_services.preferences->setString(PreferenceKeys::apiBaseURL, address);
    Q_EMIT serviceAddressChanged();
}

// ---- services

void AppModel::startAppServices()
{
    if (m_hasStartedServices)
        return;
    refreshPermissions(true);

    // Each handler returns at once; the model's operation runs from the event loop.
    auto &monitor = *m_services.pushToTalkMonitor;
    const auto later = [model = QPointer<AppModel>(this)](QCoro::Task<> (AppModel::*operation)()) {
        return [model, operation] {
            if (!model)
                return;
            QMetaObject::invokeMethod(
                model.data(),
                [model, operation] {
                    if (model)
                        (model->*operation)();
                },
                Qt::QueuedConnection);
        };
    };
    monitor.holdStartedHandler = later(&AppModel::globalPressToTalkBegan);
    monitor.holdEndedHandler = later(&AppModel::globalPressToTalkEnded);
    monitor.toggleStartedHandler = later(&AppModel::globalToggleRecordingBegan);
    monitor.toggleEndedHandler = later(&AppModel::globalToggleRecordingEnded);
    monitor.holdCancelledHandler = later(&AppModel::globalPressToTalkCancelled);

    if (!monitor.isInstalled()) {
        try {
            monitor.installMonitors();
        } catch (...) {
            m_hasStartedServices = false;
            setTriggerRegistrationError(localizedMessage(std::current_exception()));
        }
    }
    if (monitor.isInstalled()) {
        m_hasStartedServices = true;
        // Installed in part (a Wayland session) is still something the user must hear about.
        setTriggerRegistrationError(monitor.installNotice());
    }

    if (!m_isRecording && !m_isBusy)
        setStatusMessage(defaultStatusMessage());
}

void AppModel::handleTriggerKeyChanged(bool down)
{
    AudioRecorder &recorder = *m_services.audioRecorder;
    if (!down) {
        // A tap, a shortcut, or a hold whose recording runs already or never will. A
        // toggle's start may still be on its way: the warm-up's own limit ends it if none
        // comes.
        if (m_services.pushToTalkMonitor->triggerState().phase != PushToTalkTriggerPhase::toggleActive) {
            recorder.endWarmUp();
            m_warmLiveTranscription.reset();
        }
        return;
    }
    // Desktops show the open microphone: only for a press that can start a dictation.
    const bool keyAvailable = m_apiKey.knownKey() || m_apiKey.hasStoredKey;
    if (m_startListeningOnTriggerDown && !m_isBusy && !m_isRecording && keyAvailable
        && m_microphonePermissionState == PermissionState::authorized) {
        recorder.warmUp();
        warmUpLiveTranscription();
    }
}

// ---- errors

void AppModel::presentError(const QString &message)
{
    setErrorMessage(message);
}

QString AppModel::localizedMessage(const std::exception &error) const
{
    if (const auto *quorla = dynamic_cast<const QuorlaError *>(&error))
        return quorla->errorDescription(*m_services.words);
    if (const auto *platform = dynamic_cast<const PlatformError *>(&error))
        return platform->description();
    return QString::fromUtf8(error.what());
}

QString AppModel::localizedMessage(const std::exception_ptr &error) const
{
    try {
        std::rethrow_exception(error);
    } catch (const std::exception &e) {
        return localizedMessage(e);
    } catch (...) {
        return QStringLiteral("An unexpected error occurred.");
    }
}

// ---- observable setters

void AppModel::setStatusMessage(const QString &message)
{
    assign(m_statusMessage, message, &AppModel::statusMessageChanged);
}

void AppModel::setErrorMessage(const std::optional<QString> &message)
{
    assign(m_errorMessage, message, &AppModel::errorMessageChanged);
}

void AppModel::setIsBusy(bool value)
{
    assign(m_isBusy, value, &AppModel::isBusyChanged);
}

void AppModel::setIsRecording(bool value)
{
    assign(m_isRecording, value, &AppModel::isRecordingChanged);
}

void AppModel::setHasStoredAPIKey(bool value)
{
    if (assign(m_apiKey.hasStoredKey, value, &AppModel::hasStoredAPIKeyChanged))
        Q_EMIT statusInputsChanged();
}

void AppModel::setIsKeychainLocked(bool value)
{
    if (assign(m_apiKey.keychainLocked, value, &AppModel::isKeychainLockedChanged))
        Q_EMIT statusInputsChanged();
}

void AppModel::setTriggerRegistrationError(const std::optional<QString> &message)
{
    if (assign(m_triggerRegistrationError, message, &AppModel::triggerRegistrationErrorChanged))
        Q_EMIT statusInputsChanged();
}

void AppModel::setAccessibilityPermissionGranted(bool value)
{
    if (assign(m_accessibilityPermissionGranted, value, &AppModel::accessibilityPermissionGrantedChanged))
        Q_EMIT statusInputsChanged();
}

void AppModel::setMicrophonePermissionState(PermissionState value)
{
    if (assign(m_microphonePermissionState, value, &AppModel::microphonePermissionStateChanged))
        Q_EMIT statusInputsChanged();
}

void AppModel::setCustomDictionaryEntries(const QList<CustomDictionaryEntry> &entries)
{
    assign(m_customDictionaryEntries, entries, &AppModel::customDictionaryEntriesChanged);
}

void AppModel::setRecentTranscripts(const QList<TranscriptEntry> &entries)
{
    assign(m_recentTranscripts, entries, &AppModel::recentTranscriptsChanged);
}

void AppModel::setTypingStatistics(const TypingStatistics &statistics)
{
    assign(m_typingStatistics, statistics, &AppModel::typingStatisticsChanged);
}

void AppModel::setAvailableAppUpdate(const std::optional<AppUpdate> &update)
{
    assign(m_availableAppUpdate, update, &AppModel::availableAppUpdateChanged);
}

void AppModel::setCurrentInputLanguageHint(const std::optional<InputLanguageHint> &hint)
{
    assign(m_currentInputLanguageHint, hint, &AppModel::currentInputLanguageHintChanged);
}

// ---- for QML

QVariant AppModel::availableAppUpdateVariant() const
{
    return m_availableAppUpdate ? QVariant::fromValue(*m_availableAppUpdate) : QVariant();
}

QString AppModel::microphonePermissionStateName() const
{
    switch (m_microphonePermissionState) {
    case PermissionState::authorized:
        return QStringLiteral("authorized");
    case PermissionState::denied:
        return QStringLiteral("denied");
    case PermissionState::notDetermined:
        break;
    }
    return QStringLiteral("notDetermined");
}

QVariant AppModel::currentInputLanguageHintVariant() const
{
    return m_currentInputLanguageHint ? QVariant::fromValue(*m_currentInputLanguageHint) : QVariant();
}
