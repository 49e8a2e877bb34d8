#include "AacFileWriter.h"

#include "support/PlatformError.h"

#include <QFile>
#include <type_traits>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libavutil/error.h>
#include <libswresample/swresample.h>
}

struct AacFileWriter::Codec {
    AVFormatContext *format = nullptr;
    AVCodecContext *encoder = nullptr;
    AVStream *stream = nullptr;
    SwrContext *converter = nullptr;
    AVAudioFifo *fifo = nullptr;
    AVFrame *frame = nullptr;
    AVPacket *packet = nullptr;
    std::vector<std::int16_t> frameSamples;
    bool finished = false;
    // The tap's own converter (16 kHz to its rate) and where its output goes.
    SwrContext *tapConverter = nullptr;
    int tapRate = 0;
    std::function<void(std::span<const std::int16_t>)> tap;
    std::vector<std::int16_t> tapSamples;

    ~Codec()
    {
        av_packet_free(&packet);
        av_frame_free(&frame);
        if (fifo)
            av_audio_fifo_free(fifo);
        swr_free(&converter);
        swr_free(&tapConverter);
        avcodec_free_context(&encoder);
        if (format) {
            if (format->pb)
                avio_closep(&format->pb);
            avformat_free_context(format);
        }
    }
};

namespace {

QString errorText(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return QString::fromLocal8Bit(text);
}

} // namespace

AacFileWriter::AacFileWriter(const QString &filePath)
    : m_filePath(filePath)
    , m_codec(std::make_unique<Codec>())
{
    // FFmpeg's informational chatter would otherwise fill the log on every recording.
    av_log_set_level(AV_LOG_ERROR);
    Codec &c = *m_codec;
    const QByteArray path = QFile::encodeName(filePath);

    // "ipod" is the muxer behind .m4a: MPEG-4 audio that every speech service accepts.
    if (const int error = avformat_alloc_output_context2(&c.format, nullptr, "ipod", path.constData()); error < 0)
        fail(error, Step::setUp);
    const AVCodec *aac = avcodec_find_encoder_by_name("aac");
    if (!aac) {
        abort();
        throw PlatformError(PlatformError::Domain::audio, QStringLiteral("The AAC audio encoder isn't available."));
    }
    c.stream = avformat_new_stream(c.format, nullptr);
    c.encoder = avcodec_alloc_context3(aac);
    if (!c.stream || !c.encoder)
        fail(AVERROR(ENOMEM), Step::setUp);
    c.encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    c.encoder->sample_rate = sampleRate;
    c.encoder->bit_rate = bitRate;
    c.encoder->profile = FF_PROFILE_AAC_LOW;
    c.encoder->time_base = AVRational{1, sampleRate};
    av_channel_layout_default(&c.encoder->ch_layout, 1);
    // MPEG-4 keeps the decoder configuration in the stream header, not in every frame.
    if (c.format->oformat->flags & AVFMT_GLOBALHEADER)
        c.encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (const int error = avcodec_open2(c.encoder, aac, nullptr); error < 0)
        fail(error, Step::setUp);
    if (const int error = avcodec_parameters_from_context(c.stream->codecpar, c.encoder); error < 0)
        fail(error, Step::setUp);
    c.stream->time_base = c.encoder->time_base;

    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    if (const int error = swr_alloc_set_opts2(&c.converter, &mono, AV_SAMPLE_FMT_FLTP, sampleRate, &mono,
                                              AV_SAMPLE_FMT_S16, sampleRate, 0, nullptr);
        error < 0)
        fail(error, Step::setUp);
    if (const int error = swr_init(c.converter); error < 0)
        fail(error, Step::setUp);
    c.fifo = av_audio_fifo_alloc(AV_SAMPLE_FMT_S16, 1, c.encoder->frame_size * 4);
    c.frame = av_frame_alloc();
    c.packet = av_packet_alloc();
    if (!c.fifo || !c.frame || !c.packet)
        fail(AVERROR(ENOMEM), Step::setUp);
    c.frame->format = AV_SAMPLE_FMT_FLTP;
    c.frame->sample_rate = sampleRate;
    c.frame->nb_samples = c.encoder->frame_size;
    av_channel_layout_copy(&c.frame->ch_layout, &c.encoder->ch_layout);
    if (const int error = av_frame_get_buffer(c.frame, 0); error < 0)
        fail(error, Step::setUp);
    c.frameSamples.resize(std::size_t(c.encoder->frame_size));

    if (const int error = avio_open(&c.format->pb, path.constData(), AVIO_FLAG_WRITE); error < 0)
        fail(error, Step::create);

    // The index goes in front so the file can be read while it streams to the service.
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    const int error = avformat_write_header(c.format, &options);
    av_dict_free(&options);
    if (error < 0)
        fail(error, Step::write);
}

AacFileWriter::~AacFileWriter()
{
    if (m_codec && !m_codec->finished)
        abort();
}

void AacFileWriter::write(std::span<const std::int16_t> samples)
{
    if (!m_codec || m_codec->finished || samples.empty())
        return;
    void *data = const_cast<std::int16_t *>(samples.data());
    if (const int error = av_audio_fifo_write(m_codec->fifo, &data, int(samples.size())); error < 0)
        fail(error, Step::write);
    m_samplesWritten += std::int64_t(samples.size());
    encodeAvailable(false);
    tapSamples(samples);
}

void AacFileWriter::setPcmTap(int sampleRate, std::function<void(std::span<const std::int16_t>)> deliver)
{
    if (!m_codec)
        return;
    Codec &c = *m_codec;
    tapSamples({});
    swr_free(&c.tapConverter);
    c.tap = std::move(deliver);
    c.tapRate = sampleRate;
    if (!c.tap)
        return;
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    if (const int error = swr_alloc_set_opts2(&c.tapConverter, &mono, AV_SAMPLE_FMT_S16, sampleRate, &mono,
                                              AV_SAMPLE_FMT_S16, AudioFileWriter::sampleRate, 0, nullptr);
        error < 0)
        fail(error, Step::setUp);
    if (const int error = swr_init(c.tapConverter); error < 0)
        fail(error, Step::setUp);
}

// An empty span flushes what the converter still holds.
void AacFileWriter::tapSamples(std::span<const std::int16_t> samples)
{
    Codec &c = *m_codec;
    if (!c.tap || !c.tapConverter)
        return;
    const int capacity = swr_get_out_samples(c.tapConverter, int(samples.size()));
    if (capacity <= 0)
        return;
    c.tapSamples.resize(std::size_t(capacity));
    auto *output = reinterpret_cast<std::uint8_t *>(c.tapSamples.data());
    const auto *input = reinterpret_cast<const std::uint8_t *>(samples.data());
    const int converted = swr_convert(c.tapConverter, &output, capacity, samples.empty() ? nullptr : &input,
                                      int(samples.size()));
    // A converter fault costs the copy its audio, never the recording.
    if (converted > 0)
        c.tap(std::span<const std::int16_t>(c.tapSamples.data(), std::size_t(converted)));
}

void AacFileWriter::finish()
{
    if (!m_codec || m_codec->finished)
        return;
    Codec &c = *m_codec;
    encodeAvailable(true);
    tapSamples({});
    if (const int error = avcodec_send_frame(c.encoder, nullptr); error < 0)
        fail(error, Step::write);
    drainPackets();
    if (const int error = av_write_trailer(c.format); error < 0)
        fail(error, Step::write);
    if (c.format->pb->error < 0)
        fail(c.format->pb->error, Step::write);
    if (const int error = avio_closep(&c.format->pb); error < 0)
        fail(error, Step::write);
    c.finished = true;
}

void AacFileWriter::abort() noexcept
{
    if (!m_codec)
        return;
    m_codec.reset();
    QFile::remove(m_filePath);
}

void AacFileWriter::encodeAvailable(bool flushing)
{
    Codec &c = *m_codec;
    const int frameSize = c.encoder->frame_size;
    // The encoder takes whole frames; only the last one of a recording may be short.
    while (av_audio_fifo_size(c.fifo) >= frameSize || (flushing && av_audio_fifo_size(c.fifo) > 0)) {
        const int count = std::min(frameSize, av_audio_fifo_size(c.fifo));
        void *data = c.frameSamples.data();
        if (const int error = av_audio_fifo_read(c.fifo, &data, count); error < 0)
            fail(error, Step::write);
        if (const int error = av_frame_make_writable(c.frame); error < 0)
            fail(error, Step::write);
        const auto *input = reinterpret_cast<const std::uint8_t *>(c.frameSamples.data());
        if (const int error = swr_convert(c.converter, c.frame->data, count, &input, count); error < 0)
            fail(error, Step::write);
        c.frame->nb_samples = count;
        c.frame->pts = m_nextPts;
        m_nextPts += count;
        if (const int error = avcodec_send_frame(c.encoder, c.frame); error < 0)
            fail(error, Step::write);
        drainPackets();
    }
}

void AacFileWriter::drainPackets()
{
    Codec &c = *m_codec;
    for (;;) {
        const int received = avcodec_receive_packet(c.encoder, c.packet);
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            break;
        if (received < 0)
            fail(received, Step::write);
        av_packet_rescale_ts(c.packet, c.encoder->time_base, c.stream->time_base);
        c.packet->stream_index = c.stream->index;
        if (const int error = av_interleaved_write_frame(c.format, c.packet); error < 0)
            fail(error, Step::write);
    }
    // Each frame goes to disk as it is encoded, so a full disk shows while recording,
    // not only at the stop; the I/O context reports it only through its error field.
    avio_flush(c.format->pb);
    if (c.format->pb->error < 0)
        fail(c.format->pb->error, Step::write);
}

void AacFileWriter::fail(int error, Step step)
{
    abort();
    const QString reason = errorText(error);
    switch (step) {
    case Step::create:
        throw PlatformError(PlatformError::Domain::file,
                            QStringLiteral("The recording file \"%1\" couldn't be created: %2.").arg(m_filePath, reason),
                            error);
    case Step::write:
        throw PlatformError(PlatformError::Domain::file,
                            QStringLiteral("The recording couldn't be saved to \"%1\": %2.").arg(m_filePath, reason),
                            error);
    case Step::setUp:
        break;
    }
    throw PlatformError(PlatformError::Domain::audio,
                        QStringLiteral("The audio encoder couldn't be set up: %1.").arg(reason), error);
}

// The module's one exported symbol; everything else in it stays hidden.
extern "C" Q_DECL_EXPORT AudioFileWriter *quorlaCreateAacFileWriter(const QString &filePath)
{
    return new AacFileWriter(filePath);
}
static_assert(std::is_same_v<decltype(&quorlaCreateAacFileWriter), CreateAudioFileWriter>);
