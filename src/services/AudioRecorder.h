#pragma once

#include "models/PermissionState.h"
#include "platform/AudioCapture.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>

// Records one dictation at a time into "<temp>/Quorla/<UUID>.m4a" and keeps the
// loudest level reached, polled every 0.1 s. Can open the input ahead of a recording
// (a warm-up), so the first syllable, spoken before the hold is recognized, is kept.
class AudioRecorder : public QObject
{
    Q_OBJECT

public:
    struct FinishedRecording {
        QString fileURL; // local file path; the caller owns the file
        double duration = 0;
        float maxPeakPower = -160.0f;
    };

    // The longest a warmed-up input stays open without a recording (a lost key-up, a
    // start that never came).
    static constexpr std::chrono::milliseconds longestWarmUp{2000};

    explicit AudioRecorder(std::shared_ptr<AudioCapture> capture, QString recordingsDirectory = {},
                           QObject *parent = nullptr);

    // The temporary directory's "Quorla" folder.
    static QString defaultRecordingsDirectory();

    [[nodiscard]] const QString &recordingsDirectory() const { return m_recordingsDirectory; }
    [[nodiscard]] PermissionState permissionState() const;
    QCoro::Task<bool> requestPermission();

    // Throws a PlatformError when the directory or file cannot be made,
    // QuorlaError::recordingFailed when the input refuses to start; the recorder stays
    // idle then. A tap gets a copy of this recording's audio as it is captured.
    void startRecording(PcmTap tap = {});
    // Throws QuorlaError::noRecordingInProgress when idle, or the fault that broke the
    // recording (its file is deleted and the recorder is idle again).
    FinishedRecording stopRecording();
    // The tap's consumer gets the audio captured up to now and nothing after, while the
    // file goes on to stopRecording(); does nothing when idle.
    void endPcmTap();
    // Ends the recording and deletes its file; does nothing when idle.
    void cancelRecording();

    // Opens the input ahead of a likely recording; does nothing while recording.
    void warmUp();
    // Closes a warmed-up input at once, as when the press turned out to be no
    // dictation; does nothing while recording.
    void endWarmUp();

    [[nodiscard]] bool isRecording() const { return m_currentRecordingURL.has_value(); }
    [[nodiscard]] float maxPeakPower() const { return m_maxPeakPower; }
    // How long the running recording has heard nothing louder than a quiet room.
    [[nodiscard]] double silentSeconds() const { return m_capture->currentTime() - m_lastSoundAt; }
    [[nodiscard]] AudioCapture &capture() const { return *m_capture; }

Q_SIGNALS:
    // The running recording broke (input or audio server gone, disk full). The next
    // stopRecording() throws the fault; stop it at once to tell the user.
    void recordingFailed();

private:
    QString makeRecordingURL() const;
    void meterTick();
    void foldPeakPower();
    void becomeIdle();

    std::shared_ptr<AudioCapture> m_capture;
    std::optional<QString> m_currentRecordingURL;
    QTimer m_meterTimer;
    QTimer m_releaseTimer;
    float m_maxPeakPower = -160.0f;
    double m_lastSoundAt = 0;
    QString m_recordingsDirectory;
};
