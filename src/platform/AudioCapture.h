#pragma once

#include "models/PermissionState.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <exception>

// Microphone capture into a mono 16 kHz AAC file in an MPEG-4 container.
class AudioCapture
{
public:
    virtual ~AudioCapture() = default;

    [[nodiscard]] virtual PermissionState permissionState() = 0;
    // Asks for access when it is not determined yet; returns whether recording is allowed.
    virtual QCoro::Task<bool> requestPermission() = 0;

    // Opens the input ahead of a likely recording and keeps its latest audio, so that a
    // start() soon after begins with what was said since this call. A failure stays
    // silent here (start() reports it); does nothing while recording.
    virtual void prepare() = 0;
    // Closes a prepared input and forgets its audio; does nothing while recording.
    virtual void release() = 0;

    // Starts writing a new recording to filePath. Throws QuorlaError::recordingFailed
    // when the input refuses to start, or a PlatformError for file problems or a
    // missing encoder; no file is left behind then.
    virtual void start(const QString &filePath) = 0;
    // Seconds recorded since start() (after stop(), in the finished file), not counting
    // the prepared audio the file begins with.
    [[nodiscard]] virtual double currentTime() const = 0;
    // The loudest channel-0 peak since the previous call (and since start(): the prepared
    // audio is not counted), in dBFS, never below -160.
    virtual float takePeakPower() = 0;
    // Finishes the file (flushes the encoder) and closes the input. Throws the fault
    // that broke the recording, or a PlatformError when the file cannot be finished;
    // the file is gone then.
    virtual void stop() = 0;
    // The fault that broke the running recording (input gone, audio server gone, disk
    // full), or null. The recording is over then and its file removed; stop() throws it.
    [[nodiscard]] virtual std::exception_ptr failure() const = 0;
};
