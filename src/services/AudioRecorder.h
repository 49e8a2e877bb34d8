#pragma once

#include "models/PermissionState.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

class AudioCapture;

// Records one dictation at a time into "<temp>/Quorla/<UUID>.m4a" and keeps the
// loudest level reached, polled every 0.1 s.
class AudioRecorder : public QObject
{
    Q_OBJECT

public:
    struct FinishedRecording {
        QString fileURL; // local file path; the caller owns the file
        double duration = 0;
        float maxPeakPower = -160.0f;
    };

    explicit AudioRecorder(std::shared_ptr<AudioCapture> capture, QString recordingsDirectory = {},
                           QObject *parent = nullptr);

    // The temporary directory's "Quorla" folder.
    static QString defaultRecordingsDirectory();

    [[nodiscard]] const QString &recordingsDirectory() const { return m_recordingsDirectory; }
    [[nodiscard]] PermissionState permissionState() const;
    QCoro::Task<bool> requestPermission();

    // Throws a PlatformError when the directory cannot be made, QuorlaError::recordingFailed
    // when the input refuses to start; the recorder stays idle then.
    void startRecording();
    // Throws QuorlaError::noRecordingInProgress when idle.
    FinishedRecording stopRecording();
    // Ends the recording and deletes its file; does nothing when idle.
    void cancelRecording();

    [[nodiscard]] bool isRecording() const { return m_currentRecordingURL.has_value(); }
    [[nodiscard]] float maxPeakPower() const { return m_maxPeakPower; }
    [[nodiscard]] AudioCapture &capture() const { return *m_capture; }

private:
    QString makeRecordingURL() const;
    void foldPeakPower();
    void finish();

    std::shared_ptr<AudioCapture> m_capture;
    std::optional<QString> m_currentRecordingURL;
    QTimer m_meterTimer;
    float m_maxPeakPower = -160.0f;
    QString m_recordingsDirectory;
};
