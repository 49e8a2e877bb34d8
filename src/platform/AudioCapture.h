#pragma once

#include "models/PermissionState.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <cstdint>
#include <exception>
#include <functional>
#include <span>

// A copy of the recording as it is captured, as mono 16-bit PCM at the rate a
// consumer asks for (a streaming speech service takes other rates than the file).
struct PcmTap {
    int sampleRate = 0;
    std::function<void(std::span<const std::int16_t>)> deliver;
};

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
    // The next start() also hands every sample of its recording, the kept audio from
    // before it included, to tap, converted to tap.sampleRate; its stop() delivers the
    // last ones. An empty tap (the default) delivers nothing.
    virtual void setPcmTap(PcmTap tap) = 0;
    // Hands the running recording's tap what was captured up to now and nothing after;
    // the file goes on until stop(). Does nothing without a recording or a tap.
    virtual void endPcmTap() = 0;
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
