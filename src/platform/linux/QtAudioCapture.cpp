#include "QtAudioCapture.h"

#include "models/QuorlaError.h"
#include "platform/linux/PeakLevel.h"
#include "support/PlatformError.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSource>
#include <QLoggingCategory>
#include <QMediaDevices>
#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(lcAudioCapture, "quorla.audio")

namespace {

constexpr int bytesPerSample = 2;

std::exception_ptr inputLost()
{
    return std::make_exception_ptr(
        PlatformError(PlatformError::Domain::audio,
                      QStringLiteral("The recording stopped because the microphone or the sound server went away.")));
}

std::span<const std::int16_t> samplesOf(const QByteArray &data)
{
    return {reinterpret_cast<const std::int16_t *>(data.constData()), std::size_t(data.size() / bytesPerSample)};
}

} // namespace

QtAudioCapture::QtAudioCapture(QObject *parent, const QString &encoderModulePath, int encoderIdleMilliseconds)
    : QObject(parent)
    , m_encoder(encoderModulePath)
{
    m_stallCheck.setInterval(250);
    connect(&m_stallCheck, &QTimer::timeout, this, &QtAudioCapture::checkForStall);
    m_encoderIdle.setSingleShot(true);
    m_encoderIdle.setInterval(encoderIdleMilliseconds);
    connect(&m_encoderIdle, &QTimer::timeout, this, &QtAudioCapture::unloadIdleEncoder);
}

QtAudioCapture::~QtAudioCapture()
{
    // No event loop may be left to delete the source later; an unfinished file goes
    // with its writer.
    if (m_source) {
        m_source->disconnect(this);
        m_source->stop();
    }
}

PermissionState QtAudioCapture::permissionState()
{
    // Linux has no microphone permission of its own: recording is allowed exactly when
    // the audio server lets us in and offers an input. With no server at all Qt lists
    // no inputs and reports no error, which lands here too.
    return QMediaDevices::audioInputs().isEmpty() ? PermissionState::denied : PermissionState::authorized;
}

QCoro::Task<bool> QtAudioCapture::requestPermission()
{
    co_return permissionState() == PermissionState::authorized;
}

void QtAudioCapture::prepare()
{
    if (m_writer)
        return;
    if (m_source) {
        // Still open from a tap a moment ago: what was said before this press is not
        // part of the dictation.
        readAvailable();
        m_preRoll.clear();
    } else {
        openInput();
    }
    // Loads while the hold is being recognized; the start() of the hold waits for the
    // rest of it, if any, and reports a failure.
    m_encoder.loadInBackground();
}

void QtAudioCapture::release()
{
    if (!m_writer)
        closeInput();
}

void QtAudioCapture::start(const QString &filePath)
{
    m_failure = nullptr;
    m_finishedDuration = 0;
    auto writer = m_encoder.createWriter(filePath); // throws PlatformError
    if (PcmTap tap = std::exchange(m_pcmTap, {}); tap.deliver)
        writer->setPcmTap(tap.sampleRate, std::move(tap.deliver)); // throws PlatformError, the file gone
    if (!openInput()) {
        writer->abort();
        throw QuorlaError(QuorlaError::Kind::recordingFailed);
    }
    readAvailable();
    // What was said before the start goes into the file, but whether the recording
    // holds speech is judged from the start on.
    m_peakPower = -160.0f;
    m_preRollDuration = double(samplesOf(m_preRoll).size()) / AudioFileWriter::sampleRate;
    try {
        writer->write(samplesOf(m_preRoll)); // the writer removes its file when this fails
    } catch (...) {
        closeInput();
        throw;
    }
    m_preRoll.clear();
    m_writer = std::move(writer);
    m_sinceLastAudio.start();
    m_stallCheck.start();
}

double QtAudioCapture::currentTime() const
{
    return std::max(0.0, (m_writer ? m_writer->duration() : m_finishedDuration) - m_preRollDuration);
}

float QtAudioCapture::takePeakPower()
{
    return std::exchange(m_peakPower, -160.0f);
}

void QtAudioCapture::stop()
{
    if (m_writer)
        readAvailable();
    closeInput();
    if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    if (!m_writer)
        return;
    const auto writer = std::move(m_writer);
    m_finishedDuration = writer->duration();
    writer->finish(); // throws PlatformError; the writer removes its file
}

void QtAudioCapture::endPcmTap()
{
    if (m_writer)
        readAvailable();
    if (m_writer) // still there, unless that broke the recording
        m_writer->setPcmTap(0, {});
}

bool QtAudioCapture::openInput()
{
    if (m_source)
        return true;
    m_encoderIdle.stop();
    const QAudioDevice device = QMediaDevices::defaultAudioInput();
    if (device.isNull()) {
        qCWarning(lcAudioCapture) << "the audio server offers no input";
        return false;
    }
    QAudioFormat format;
    format.setSampleRate(AudioFileWriter::sampleRate);
    format.setChannelCount(1);
    format.setSampleFormat(QAudioFormat::Int16);
    m_source = std::make_unique<QAudioSource>(device, format);
    connect(m_source.get(), &QAudioSource::stateChanged, this, [this](QAudio::State state) {
        if (state == QAudio::StoppedState)
            handleInputStopped();
    });
    m_input = m_source->start();
    if (!m_input || m_source->error() != QAudio::NoError) {
        qCWarning(lcAudioCapture) << "the input" << device.description() << "refused to start:" << m_source->error();
        closeInput();
        return false;
    }
    connect(m_input, &QIODevice::readyRead, this, &QtAudioCapture::readAvailable);
    return true;
}

void QtAudioCapture::closeInput()
{
    m_stallCheck.stop();
    m_preRoll.clear();
    m_partialSample.clear();
    m_input = nullptr;
    m_encoderIdle.start();
    if (!m_source)
        return;
    // This may run inside the source's own signal: let it go once that has returned.
    QAudioSource *source = m_source.release();
    source->disconnect(this);
    source->stop();
    source->deleteLater();
}

void QtAudioCapture::readAvailable()
{
    if (!m_input)
        return;
    QByteArray data = m_partialSample + m_input->readAll();
    m_partialSample = data.size() % bytesPerSample ? data.right(1) : QByteArray();
    data.chop(m_partialSample.size());
    if (data.isEmpty())
        return;
    m_sinceLastAudio.start();
    if (!m_writer) {
        keepForPreRoll(data);
        return;
    }
    const auto samples = samplesOf(data);
    m_peakPower = std::max(m_peakPower, peakPowerDecibels(samples));
    try {
        m_writer->write(samples);
    } catch (const PlatformError &error) {
        qCWarning(lcAudioCapture) << "the recording broke:" << error.description();
        breakRecording(std::current_exception());
    }
}

void QtAudioCapture::keepForPreRoll(const QByteArray &data)
{
    constexpr qsizetype limit = qsizetype(AudioFileWriter::sampleRate) * preRollMilliseconds / 1000 * bytesPerSample;
    m_preRoll.append(data);
    if (m_preRoll.size() > limit)
        m_preRoll.remove(0, m_preRoll.size() - limit);
}

void QtAudioCapture::handleInputStopped()
{
    if (!m_source || m_source->error() == QAudio::NoError)
        return;
    qCWarning(lcAudioCapture) << "the input stopped:" << m_source->error();
    if (m_writer)
        breakRecording(inputLost());
    else
        closeInput();
}

void QtAudioCapture::checkForStall()
{
    readAvailable(); // after a busy event loop, audio may be waiting rather than missing
    if (!m_writer || m_sinceLastAudio.elapsed() < stallMilliseconds)
        return;
    qCWarning(lcAudioCapture) << "the input delivered nothing for" << m_sinceLastAudio.elapsed() << "ms";
    breakRecording(inputLost());
}

void QtAudioCapture::unloadIdleEncoder()
{
    // In use again: the next close starts the wait anew.
    if (!m_source && !m_writer)
        m_encoder.unload();
}

void QtAudioCapture::breakRecording(std::exception_ptr fault)
{
    m_failure = std::move(fault);
    if (m_writer) {
        m_finishedDuration = m_writer->duration();
        m_writer->abort();
        m_writer.reset();
    }
    closeInput();
}
