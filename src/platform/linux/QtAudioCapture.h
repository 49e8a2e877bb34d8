#pragma once

#include "platform/AudioCapture.h"
#include "platform/linux/AacEncoderModule.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <cstdint>
#include <memory>
#include <span>

class QAudioSource;
class QIODevice;

// The desktop audio server's default input (PulseAudio, or PipeWire's PulseAudio
// service) through Qt Multimedia, at 16 kHz mono 16-bit, encoded into the .m4a as the
// buffers arrive on the event loop. While prepared, keeps the latest audio so a
// recording starts with what was said since the trigger went down. The encoder module
// is loaded at a prepare() (or start()) and unloaded again once the input has been
// closed for a while: Quorla idles without it.
class QtAudioCapture : public QObject, public AudioCapture
{
    Q_OBJECT

public:
    // The most audio kept from before a recording starts.
    static constexpr int preRollMilliseconds = 500;
    // A recording whose input delivers nothing for this long has lost its microphone:
    // Qt reports a source that vanishes under a running stream as no error at all.
    static constexpr int stallMilliseconds = 1500;
    // Dictations come in bursts; loading the encoder again takes 30-160 ms, mostly
    // while the hold is being recognized.
    static constexpr int defaultEncoderIdleMilliseconds = 120000;

    // An empty encoderModulePath means the installed module (AacEncoderModule).
    explicit QtAudioCapture(QObject *parent = nullptr, const QString &encoderModulePath = {},
                            int encoderIdleMilliseconds = defaultEncoderIdleMilliseconds);
    ~QtAudioCapture() override;

    PermissionState permissionState() override;
    QCoro::Task<bool> requestPermission() override;
    void prepare() override;
    void release() override;
    void start(const QString &filePath) override;
    void setPcmTap(PcmTap tap) override { m_pcmTap = std::move(tap); }
    void endPcmTap() override;
    double currentTime() const override;
    float takePeakPower() override;
    void stop() override;
    std::exception_ptr failure() const override { return m_failure; }

    [[nodiscard]] bool isEncoderLoaded() const { return m_encoder.isLoaded(); }

private:
    bool openInput();
    void closeInput();
    void readAvailable();
    void handleInputStopped();
    void breakRecording(std::exception_ptr fault);
    void keepForPreRoll(const QByteArray &data);
    void checkForStall();
    void unloadIdleEncoder();

    std::unique_ptr<QAudioSource> m_source;
    QIODevice *m_input = nullptr;
    QByteArray m_preRoll;
    QByteArray m_partialSample;
    AacEncoderModule m_encoder;
    std::unique_ptr<AudioFileWriter> m_writer;
    double m_finishedDuration = 0;
    double m_preRollDuration = 0;
    float m_peakPower = -160.0f;
    std::exception_ptr m_failure;
    PcmTap m_pcmTap;
    QTimer m_stallCheck;
    QTimer m_encoderIdle;
    QElapsedTimer m_sinceLastAudio;
};
