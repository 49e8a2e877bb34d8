#pragma once

#include "platform/linux/AudioFileWriter.h"

#include <memory>

// Encodes 16 kHz mono 16-bit PCM as it arrives into AAC-LC at 32 kbit/s inside an
// MPEG-4 audio file (.m4a, moov up front), so finishing only flushes the last frame.
// Built into the encoder module (AacEncoderModule), the only code that links FFmpeg.
class AacFileWriter final : public AudioFileWriter
{
public:
    static constexpr int bitRate = 32000;

    // Creates the file and the encoder. Throws PlatformError (file) when the file
    // cannot be created, PlatformError (audio) when the encoder is missing.
    explicit AacFileWriter(const QString &filePath);
    ~AacFileWriter() override;

    void write(std::span<const std::int16_t> samples) override;
    void finish() override;
    void abort() noexcept override;
    void setPcmTap(int sampleRate, std::function<void(std::span<const std::int16_t>)> deliver) override;
    [[nodiscard]] std::int64_t samplesWritten() const override { return m_samplesWritten; }

private:
    struct Codec;
    enum class Step { setUp,
                      create,
                      write };

    void encodeAvailable(bool flushing);
    void drainPackets();
    void tapSamples(std::span<const std::int16_t> samples);
    [[noreturn]] void fail(int error, Step step);

    QString m_filePath;
    std::unique_ptr<Codec> m_codec;
    std::int64_t m_samplesWritten = 0;
    std::int64_t m_nextPts = 0;
};
