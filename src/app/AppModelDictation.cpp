// The dictation session: from trigger to inserted text.
#include "AppModel.h"

#include "models/CustomDictionary.h"
#include "models/QuorlaError.h"
#include "models/TranscriptHistory.h"
#include "platform/Clipboard.h"
#include "platform/Workspace.h"
#include "services/AudioRecorder.h"
#include "services/DictationPipeline.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "services/InputSourceLanguageDetector.h"
#include "services/LiveTranscription.h"
#include "services/SpeechService.h"
#include "services/TextInserter.h"
#include "services/TranslationLanguageCatalog.h"
#include "support/PlatformWords.h"

#include <QFile>
#include <QPointer>
#include <QScopeGuard>

namespace {

// Recordings this short, or this short and this quiet, hold no speech worth sending.
constexpr double shortestSpeechSeconds = 0.22;
constexpr double levelTestedUpToSeconds = 0.75;
constexpr float quietestSpeechDecibels = -20.0f;

QString startFailureStatus(DictationSource source, const QString &trigger, const QString &toggle)
{
    switch (source) {
    case DictationSource::fnHold:
        return QStringLiteral("Couldn't start dictation from %1.").arg(trigger);
    case DictationSource::fnToggle:
        return QStringLiteral("Couldn't start dictation from %1.").arg(toggle);
    case DictationSource::commandHold:
    case DictationSource::commandToggle:
        return QStringLiteral("Couldn't start dictation from %1.").arg(commandToStart(source));
    case DictationSource::manual:
        break;
    }
    return QStringLiteral("Couldn't start recording.");
}

QString finishFailureStatus(const std::optional<DictationSession> &session, const QString &trigger,
                            const QString &toggle)
{
    const DictationSource source = session ? session->source : DictationSource::manual;
    switch (source) {
    case DictationSource::fnHold:
        return QStringLiteral("Couldn't finish dictation from %1.").arg(trigger);
    case DictationSource::fnToggle:
        return QStringLiteral("Couldn't finish dictation from %1.").arg(toggle);
    case DictationSource::commandHold:
    case DictationSource::commandToggle:
        return QStringLiteral("Couldn't finish dictation from %1.").arg(commandToFinish(source));
    case DictationSource::manual:
        break;
    }
    return QStringLiteral("Couldn't finish transcription.");
}

bool isSilent(const AudioRecorder::FinishedRecording &recording)
{
    return recording.duration <= shortestSpeechSeconds
        || (recording.duration <= levelTestedUpToSeconds && recording.maxPeakPower < quietestSpeechDecibels);
}

} // namespace

// ---- trigger handlers

QCoro::Task<> AppModel::globalPressToTalkBegan()
{
    m_isGlobalTriggerHeld = true;
    if (!m_isBusy && !m_isRecording)
        co_await startRecording(DictationSource::fnHold);
}

QCoro::Task<> AppModel::globalPressToTalkEnded()
{
    m_isGlobalTriggerHeld = false;
    if (m_isRecording && m_activeSession && m_activeSession->source == DictationSource::fnHold)
        co_await stopRecordingAndTranscribe();
}

QCoro::Task<> AppModel::globalPressToTalkCancelled()
{
    m_isGlobalTriggerHeld = false; // also drops a start still waiting for the microphone
    if (m_isRecording && m_activeSession && m_activeSession->source == DictationSource::fnHold) {
        discardRecording();
        setStatusMessage(defaultStatusMessage());
    }
    co_return;
}

QCoro::Task<> AppModel::globalToggleRecordingBegan()
{
    m_isToggleRecordingRequested = true;
    if (!promoteActiveHoldSessionToToggle() && !m_isBusy && !m_isRecording)
        co_await startRecording(DictationSource::fnToggle);
}

QCoro::Task<> AppModel::globalToggleRecordingEnded()
{
    m_isToggleRecordingRequested = false;
    if (m_isRecording && m_activeSession && m_activeSession->source == DictationSource::fnToggle)
        co_await stopRecordingAndTranscribe();
}

QCoro::Task<> AppModel::startManualRecording()
{
    // A second start would orphan the running recording's file.
    if (!m_isRecording)
        co_await startRecording(DictationSource::manual);
}

bool AppModel::promoteActiveHoldSessionToToggle()
{
    if (!m_isRecording || !m_activeSession || m_activeSession->source != DictationSource::fnHold)
        return false;
    m_activeSession->source = DictationSource::fnToggle;
    m_activeSession->replaceTriggerSpace = true;
    setStatusMessage(recordingStatusMessage(*m_activeSession));
    return true;
}

// ---- start

QCoro::Task<> AppModel::startRecording(DictationSource source)
{
    if (m_isBusy)
        co_return;

    // Space pressed with the trigger before the hold began makes it a toggle.
    const auto effectiveSource = [this, source] {
        return source == DictationSource::fnHold && m_isToggleRecordingRequested ? DictationSource::fnToggle : source;
    };
    const auto failStart = [this](DictationSource failedSource, const std::exception_ptr &error) {
        m_lastRecordingStartedAt.reset();
        presentError(localizedMessage(error));
        setStatusMessage(startFailureStatus(failedSource, m_triggerDisplay, toggleDisplay()));
    };

    const QPointer<AppModel> self(this);
    QString apiKey;
    try {
        apiKey = co_await apiKeyForRequest();
    } catch (...) {
        if (self)
            failStart(effectiveSource(), std::current_exception());
        co_return;
    }
    if (!self)
        co_return;
    // Asked once per start; the answer comes on the event loop.
    co_await refreshAccessibilityPermission();
    // Another trigger may have started a session meanwhile.
    if (!self || m_isBusy || m_isRecording)
        co_return;
    setErrorMessage(std::nullopt);
    refreshLocalPermissions(true);

    DictationSession session;
    session.source = effectiveSource();
    session.transcriptionLanguage = m_services.inputSourceLanguageDetector->currentLanguageHint();
    session.replaceTriggerSpace = session.source == DictationSource::fnToggle;
    session.apiKey = apiKey;

    const QString language = statusLanguagePart(session.transcriptionLanguage);
    if (session.source == DictationSource::manual) {
        setStatusMessage(QStringLiteral("Requesting microphone access%1...").arg(language));
    } else {
        refreshLocalPermissions(false);
        if (m_accessibilityPermissionGranted) {
            // A command's target is whatever has focus as it arrives.
            ApplicationHandlePtr application =
                isCommandSource(session.source) ? nullptr : m_services.pushToTalkMonitor->capturedTargetApplication();
            if (!application)
                application = m_services.workspace->frontmostApplication();
            if (application) {
                session.insertionTarget = TextInsertionTarget{application};
                setStatusMessage(QStringLiteral("Dictation armed for %1%2. Waiting for microphone...")
                                     .arg(statusApplicationName(*session.insertionTarget), language));
            } else {
                setStatusMessage(
                    QStringLiteral("Recording%1... focus a text field before starting if you want Quorla to insert text.")
                        .arg(language));
            }
        } else {
            setStatusMessage(
                QStringLiteral("Recording%1... Accessibility is missing, so the transcript will stay in Quorla and be copied.")
                    .arg(language));
        }
    }

    bool grantedDuringThisStart = false;
    if (m_microphonePermissionState != PermissionState::authorized) {
        const auto recorder = m_services.audioRecorder;
        co_await recorder->requestPermission();
        if (!self)
            co_return;
        refreshLocalPermissions(false);
        grantedDuringThisStart = m_microphonePermissionState == PermissionState::authorized;

        // Another trigger may have started a session while the prompt was open.
        if (m_isBusy || m_isRecording)
            co_return;
    }

    // The wait may have been long: is the trigger still wanted?
    bool wanted = true;
    if (session.source == DictationSource::fnHold && m_isToggleRecordingRequested) {
        session.source = DictationSource::fnToggle;
        session.replaceTriggerSpace = true;
    } else if (session.source == DictationSource::fnToggle) {
        wanted = m_isToggleRecordingRequested;
    } else if (isCommandSource(session.source)) {
        wanted = m_isCommandRecordingRequested;
    } else if (session.source == DictationSource::fnHold) {
        wanted = m_isGlobalTriggerHeld;
        if (wanted && m_lastInputSourceChangeAt
            && isTriggerCausedInputSourceChange(*m_lastInputSourceChangeAt, m_services.now())) {
            // Holding the trigger switched the input source: that press was not meant as dictation.
            setStatusMessage(QStringLiteral("Input language changed. Hold %1 again to dictate.").arg(m_triggerDisplay));
            co_return;
        }
    }
    if (!wanted) {
        const QString again = isCommandSource(session.source) ? QStringLiteral("Run %1").arg(commandToStart(session.source))
                                                              : QStringLiteral("Use %1").arg(m_triggerDisplay);
        setStatusMessage(grantedDuringThisStart
                             ? QStringLiteral("Microphone access is ready. %1 again to start dictating.").arg(again)
                             : defaultStatusMessage());
        co_return;
    }

    try {
        if (m_microphonePermissionState == PermissionState::denied)
            throw QuorlaError(QuorlaError::Kind::microphonePermissionDenied);
        PcmTap tap;
        if (m_transcriptionMode == TranscriptionMode::live) {
            session.live = liveTranscriptionFor(session);
            tap = {LiveTranscription::sampleRate, [live = std::weak_ptr(session.live)](auto samples) {
                       if (const auto receiver = live.lock())
                           receiver->append(samples);
                   }};
        }
        m_services.audioRecorder->startRecording(std::move(tap));
    } catch (...) {
        failStart(session.source, std::current_exception());
        co_return;
    }

    m_activeSession = session;
    m_lastRecordingStartedAt = m_services.now();
    setIsRecording(true);
    setStatusMessage(recordingStatusMessage(session));
}

// ---- finish

DictationRequest AppModel::dictationRequest(const QString &recordingPath, const QString &apiKey,
                                            const std::optional<InputLanguageHint> &language) const
{
    DictationRequest request;
    request.recordingPath = recordingPath;
    request.apiKey = apiKey;
    request.mode = m_transcriptionMode;
    request.language = language;
    request.dictionaryGuidance = customDictionaryGuidance(m_customDictionaryEntries);
    request.polish = m_shouldPolishTranscript;
    if (!m_polishPrompt.trimmed().isEmpty())
        request.polishPrompt = m_polishPrompt;
    request.translationTarget = TranslationLanguageCatalog::translationLanguage(m_translationLanguageCode);
    return request;
}

QCoro::Task<> AppModel::stopRecordingAndTranscribe()
{
    if (m_isBusy)
        co_return;
    setErrorMessage(std::nullopt);
    setIsRecording(false);
    setIsBusy(true);

    const std::optional<DictationSession> session = std::exchange(m_activeSession, std::nullopt);
    m_lastRecordingStartedAt.reset();

    const QPointer<AppModel> self(this);
    const auto speech = m_services.openAIClient;
    QString recordingPath;
    // The recording is deleted however this ends, also if the model is gone by then.
    const auto deleteRecording = qScopeGuard([&recordingPath] {
        if (!recordingPath.isEmpty())
            QFile::remove(recordingPath);
    });
    const auto modelGone = [&self] { return !self; };

    try {
        QString apiKey = session ? session->apiKey : QString();
        if (!session)
            apiKey = co_await apiKeyForRequest();
        if (modelGone())
            co_return;
        const AudioRecorder::FinishedRecording recording = m_services.audioRecorder->stopRecording();
        recordingPath = recording.fileURL;

        if (isSilent(recording)) {
            qCInfo(lcDictation) << "recording of" << recording.duration << "s at" << recording.maxPeakPower
                                << "dBFS holds no speech: not sent";
            setStatusMessage(QStringLiteral("No speech detected. Try dictating again."));
            setIsBusy(false);
            co_return;
        }

        const std::optional<InputLanguageHint> language =
            session ? session->transcriptionLanguage : std::optional<InputLanguageHint>();
        const bool fromTrigger = session && session->source != DictationSource::manual;
        DictationRequest request = dictationRequest(recordingPath, apiKey, language);
        request.live = session ? session->live : nullptr;
        const auto showStep = [this, self, fromTrigger, &request](DictationStep step) {
            if (!self)
                return;
            switch (step) {
            case DictationStep::transcribing:
                setStatusMessage((fromTrigger ? QStringLiteral("Transcribing dictation%1...")
                                              : QStringLiteral("Transcribing audio%1..."))
                                     .arg(statusLanguagePart(request.language)));
                break;
            case DictationStep::uploadingAfterLiveFailure:
                setStatusMessage(QStringLiteral("Live transcription was interrupted. Uploading the recording instead..."));
                break;
            case DictationStep::polishing:
                setStatusMessage(QStringLiteral("Cleaning up text..."));
                break;
            case DictationStep::translating:
                setStatusMessage(QStringLiteral("Translating transcript to %1...").arg(request.translationTarget->displayName));
                break;
            }
        };
        const QString transcript = co_await DictationPipeline(speech).run(request, showStep);
        if (request.live)
            request.live->close();
        if (modelGone())
            co_return;

        setRecentTranscripts(updatedTranscriptHistory(m_recentTranscripts, transcript, m_services.now()));

        const InsertionOutcome outcome = co_await insertTranscriptIfNeeded(transcript, session);
        if (modelGone())
            co_return;
        if (outcome.kind == InsertionOutcome::Kind::inserted)
            recordInsertedTranscript(transcript);
        qCInfo(lcDictation) << "insertion:"
                            << (outcome.kind == InsertionOutcome::Kind::inserted          ? "done"
                                : outcome.kind == InsertionOutcome::Kind::insertionFailed ? "failed"
                                                                                          : "no target");

        // After insertion, so the clipboard ends up holding the transcript.
        const bool copyRefused =
            m_autoCopyTranscript && !m_services.clipboard->writeText(Clipboard::Selection::clipboard, transcript, false);
        setStatusMessage(finalStatusMessage(outcome, copyRefused));
    } catch (...) {
        if (modelGone())
            co_return;
        presentError(localizedMessage(std::current_exception()));
        setStatusMessage(finishFailureStatus(session, m_triggerDisplay, toggleDisplay()));
    }
    setIsBusy(false);
}

QCoro::Task<InsertionOutcome> AppModel::insertTranscriptIfNeeded(QString transcript,
                                                                 std::optional<DictationSession> session)
{
    if (!session || !session->insertionTarget)
        co_return InsertionOutcome::notAttempted();

    const QString name = statusApplicationName(*session->insertionTarget);
    setStatusMessage(QStringLiteral("Typing into %1...").arg(name));
    const QPointer<AppModel> self(this);
    const auto inserter = m_services.textInsertionService;
    const TextInsertionTarget target = *session->insertionTarget;
    const bool restoreClipboard = !m_autoCopyTranscript;
    const bool replaceTriggerSpace = session->replaceTriggerSpace;
    std::exception_ptr failure;
    try {
        co_await inserter->insert(transcript, target, restoreClipboard, replaceTriggerSpace);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure)
        co_return InsertionOutcome::inserted(name);
    InsertionOutcome outcome = InsertionOutcome::insertionFailed(name);
    if (!self)
        co_return outcome;
    presentError(localizedMessage(failure));
    outcome.leftOnClipboard = m_services.clipboard->holdsText(Clipboard::Selection::clipboard, transcript);
    co_return outcome;
}

QString AppModel::finalStatusMessage(const InsertionOutcome &outcome, bool copyRefused) const
{
    const bool copied = m_autoCopyTranscript && !copyRefused;
    // Said only where it can happen: the transcript is in History and nowhere else.
    const QString &onlyInHistory = m_services.words->clipboardRefusedStatus;
    switch (outcome.kind) {
    case InsertionOutcome::Kind::inserted:
        return copied ? QStringLiteral("Transcript inserted into %1 and copied to the clipboard.").arg(outcome.applicationName)
                      : QStringLiteral("Transcript inserted into %1.").arg(outcome.applicationName);
    case InsertionOutcome::Kind::insertionFailed:
        // Where no key can be pressed for the user, say how to paste it by hand.
        if (outcome.leftOnClipboard && !m_services.words->noPasteRouteStatus.isEmpty())
            return m_services.words->noPasteRouteStatus;
        if (copyRefused && !onlyInHistory.isEmpty())
            return onlyInHistory;
        return copied ? QStringLiteral("Typing into %1 failed, but the transcript was copied to the clipboard.")
                            .arg(outcome.applicationName)
                      : QStringLiteral("Typing into %1 failed. The transcript is still available in the app.")
                            .arg(outcome.applicationName);
    case InsertionOutcome::Kind::notAttempted:
        break;
    }
    if (copyRefused && !onlyInHistory.isEmpty())
        return onlyInHistory;
    return copied ? QStringLiteral("Transcript ready and copied to the clipboard.") : QStringLiteral("Transcript ready.");
}
