#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <span>

// Encodes 16 kHz mono 16-bit PCM as it arrives into AAC-LC at 32 kbit/s inside an
// MPEG-4 audio file (.m4a, moov up front), so finishing only flushes the last frame.
// Every failure is thrown as a PlatformError; after a failure the writer is closed
// and its file removed.
class AacFileWriter
{
public:
    static constexpr int sampleRate = 16000;
    static constexpr int bitRate = 32000;

    // Creates the file and the encoder. Throws PlatformError (file) when the file
    // cannot be created, PlatformError (audio) when the encoder is missing.
    explicit AacFileWriter(const QString &filePath);
    ~AacFileWriter(); // an unfinished file is removed
    AacFileWriter(const AacFileWriter &) = delete;
    AacFileWriter &operator=(const AacFileWriter &) = delete;

    // Encodes whole frames as soon as they are complete. Throws PlatformError
    // (file) when writing fails, as on a full disk.
    void write(std::span<const std::int16_t> samples);
    // Flushes the last frame and writes the index. Throws like write().
    void finish();
    // Closes and removes the file without finishing it; never throws.
    void abort() noexcept;

    [[nodiscard]] std::int64_t samplesWritten() const { return m_samplesWritten; }
    [[nodiscard]] double duration() const { return double(m_samplesWritten) / sampleRate; }
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

private:
    struct Codec;
    enum class Step { setUp, create, write };

    void encodeAvailable(bool flushing);
    void drainPackets();
    [[noreturn]] void fail(int error, Step step);

    QString m_filePath;
    std::unique_ptr<Codec> m_codec;
    std::int64_t m_samplesWritten = 0;
    std::int64_t m_nextPts = 0;
};
