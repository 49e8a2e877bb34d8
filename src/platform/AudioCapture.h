#pragma once

#include "models/PermissionState.h"

#include <QCoro/QCoroTask>
#include <QString>

// Microphone capture into a mono 16 kHz AAC file in an MPEG-4 container.
class AudioCapture
{
public:
    virtual ~AudioCapture() = default;

    [[nodiscard]] virtual PermissionState permissionState() = 0;
    // Asks for access when it is not determined yet; returns whether recording is allowed.
    virtual QCoro::Task<bool> requestPermission() = 0;

    // Starts writing a new recording to filePath. Throws QuorlaError::recordingFailed
    // when the input refuses to start, or a PlatformError for file problems.
    virtual void start(const QString &filePath) = 0;
    // Seconds of audio recorded so far.
    [[nodiscard]] virtual double currentTime() const = 0;
    // The loudest channel-0 peak since the previous call, in dBFS, never below -160.
    virtual float takePeakPower() = 0;
    // Finishes the file (flushes the encoder). The file stays on disk.
    virtual void stop() = 0;
};
