#include "AudioRecorder.h"

#include "models/QuorlaError.h"
#include "platform/AudioCapture.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QUuid>
#include <algorithm>

namespace {

// Louder than this is more than a quiet room: speech, or at least someone there.
constexpr float quietestSoundDecibels = -40.0f;

} // namespace

AudioRecorder::AudioRecorder(std::shared_ptr<AudioCapture> capture, QString recordingsDirectory, QObject *parent)
    : QObject(parent)
    , m_capture(std::move(capture))
    , m_recordingsDirectory(recordingsDirectory.isEmpty() ? defaultRecordingsDirectory()
                                                          : std::move(recordingsDirectory))
{
    m_meterTimer.setInterval(100);
    connect(&m_meterTimer, &QTimer::timeout, this, &AudioRecorder::meterTick);
    m_releaseTimer.setSingleShot(true);
    connect(&m_releaseTimer, &QTimer::timeout, this, &AudioRecorder::endWarmUp);
}

QString AudioRecorder::defaultRecordingsDirectory()
{
    return QDir::temp().filePath(QStringLiteral("Quorla"));
}

PermissionState AudioRecorder::permissionState() const
{
    return m_capture->permissionState();
}

QCoro::Task<bool> AudioRecorder::requestPermission()
{
    if (m_capture->permissionState() != PermissionState::notDetermined)
        co_return m_capture->permissionState() == PermissionState::authorized;
    co_return co_await m_capture->requestPermission();
}

QString AudioRecorder::makeRecordingURL() const
{
    if (!QDir().mkpath(m_recordingsDirectory))
        throw PlatformError(PlatformError::Domain::file,
                            QStringLiteral("The folder \"%1\" couldn't be created.").arg(m_recordingsDirectory));
    const QString name = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    return QDir(m_recordingsDirectory).filePath(name + QStringLiteral(".m4a"));
}

void AudioRecorder::startRecording(PcmTap tap)
{
    const QString url = makeRecordingURL();
    m_capture->setPcmTap(std::move(tap));
    m_capture->start(url); // throws; nothing is stored then
    m_releaseTimer.stop();
    m_maxPeakPower = -160.0f;
    m_lastSoundAt = 0;
    m_currentRecordingURL = url;
    foldPeakPower();
    m_meterTimer.start();
}

void AudioRecorder::meterTick()
{
    foldPeakPower();
    if (isRecording() && m_capture->failure()) {
        m_meterTimer.stop();
        Q_EMIT recordingFailed();
    }
}

void AudioRecorder::foldPeakPower()
{
    const float peak = m_capture->takePeakPower();
    m_maxPeakPower = std::max({m_maxPeakPower, peak, -160.0f});
    if (peak > quietestSoundDecibels)
        m_lastSoundAt = m_capture->currentTime();
}

AudioRecorder::FinishedRecording AudioRecorder::stopRecording()
{
    if (!m_currentRecordingURL)
        throw QuorlaError(QuorlaError::Kind::noRecordingInProgress);
    const QString url = *m_currentRecordingURL;
    // The duration counts the audio that reached the file, so the last buffered
    // samples are written before it is read.
    try {
        m_capture->stop();
    } catch (...) {
        becomeIdle();
        QFile::remove(url);
        throw;
    }
    foldPeakPower();
    FinishedRecording result{url, m_capture->currentTime(), m_maxPeakPower};
    becomeIdle();
    return result;
}

void AudioRecorder::endPcmTap()
{
    if (isRecording())
        m_capture->endPcmTap();
}

void AudioRecorder::cancelRecording()
{
    if (!m_currentRecordingURL)
        return;
    const QString url = *m_currentRecordingURL;
    try {
        m_capture->stop();
    } catch (...) {
        // The file goes either way.
    }
    becomeIdle();
    QFile::remove(url);
}

void AudioRecorder::warmUp()
{
    if (isRecording())
        return;
    m_capture->prepare();
    m_releaseTimer.start(longestWarmUp);
}

void AudioRecorder::endWarmUp()
{
    if (isRecording())
        return;
    m_releaseTimer.stop();
    m_capture->release();
}

void AudioRecorder::becomeIdle()
{
    m_meterTimer.stop();
    m_currentRecordingURL.reset();
    m_maxPeakPower = -160.0f;
}
