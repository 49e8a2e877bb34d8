#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <span>

// A recording file fed with 16 kHz mono 16-bit PCM as it arrives. Every failure is
// thrown as a PlatformError; after a failure the writer is closed and its file removed.
class AudioFileWriter
{
public:
    static constexpr int sampleRate = 16000;

    AudioFileWriter() = default;
    virtual ~AudioFileWriter() = default; // an unfinished file is removed
    AudioFileWriter(const AudioFileWriter &) = delete;
    AudioFileWriter &operator=(const AudioFileWriter &) = delete;

    // Encodes whole frames as soon as they are complete. Throws PlatformError
    // (file) when writing fails, as on a full disk.
    virtual void write(std::span<const std::int16_t> samples) = 0;
    // Flushes the last frame and writes the index. Throws like write().
    virtual void finish() = 0;
    // Closes and removes the file without finishing it; never throws.
    virtual void abort() noexcept = 0;

    // Also hands every sample written from now on to deliver, converted to sampleRate;
    // finish() delivers the last ones, and so does replacing or removing (an empty
    // deliver) the tap. Throws like the constructor when the converter cannot be set up.
    virtual void setPcmTap(int sampleRate, std::function<void(std::span<const std::int16_t>)> deliver) = 0;

    [[nodiscard]] virtual std::int64_t samplesWritten() const = 0;
    [[nodiscard]] double duration() const { return double(samplesWritten()) / sampleRate; }
};

// The encoder module's one entry point: a new writer for filePath, owned by the caller.
// Throws PlatformError like the writer's constructor.
using CreateAudioFileWriter = AudioFileWriter *(*)(const QString &filePath);
inline constexpr char createAacFileWriterSymbol[] = "quorlaCreateAacFileWriter";
