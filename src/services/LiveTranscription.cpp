#include "LiveTranscription.h"

#include "services/ServiceAddress.h"

#include <QCoro/QCoroSignal>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QNetworkRequest>
#include <QUrlQuery>
#include <algorithm>
#include <cstdlib>
#include <utility>

Q_LOGGING_CATEGORY(lcLiveTranscription, "quorla.live")

namespace {

constexpr qsizetype bytesPerSample = 2;
// Appends go out in pieces of at least 100 ms (fewer, larger messages) and at most
// a second (a socket that opened late sends its backlog in bounded messages).
constexpr qsizetype smallestAppendBytes = LiveTranscription::sampleRate / 10 * bytesPerSample;
constexpr qsizetype largestAppendBytes = LiveTranscription::sampleRate * bytesPerSample;
// Audio whose samples all stay below -40 dBFS holds no speech: 20 dB under what a
// short recording must reach to count as speech at all.
constexpr int quietestSound = 328;

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

LiveTranscription::LiveTranscription(std::chrono::milliseconds finalTranscriptDeadline, QObject *parent)
    : QObject(parent)
{
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer);
    m_deadline.setInterval(finalTranscriptDeadline);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        fail(QStringLiteral("no final transcript within %1 ms").arg(m_deadline.interval()));
    });
    connect(&m_socket, &QWebSocket::connected, this, [this] {
        m_connected = true;
        if (m_configuration)
            sendJson(*m_configuration);
        sendPendingAudio(true);
        commitWhenPossible();
        checkSettled();
    });
    connect(&m_socket, &QWebSocket::disconnected, this, [this] {
        if (!m_closing)
            fail(QStringLiteral("the socket closed: %1 %2").arg(int(m_socket.closeCode())).arg(m_socket.closeReason()));
    });
    connect(&m_socket, qOverload<QAbstractSocket::SocketError>(&QWebSocket::error), this, [this](QAbstractSocket::SocketError error) {
        if (!m_closing)
            fail(QStringLiteral("socket error %1: %2").arg(int(error)).arg(m_socket.errorString()));
    });
    connect(&m_socket, &QWebSocket::textMessageReceived, this, &LiveTranscription::handleMessage);
}

LiveTranscription::~LiveTranscription()
{
    close();
}

QUrl LiveTranscription::realtimeURL(const QUrl &apiBaseURL)
{
    QUrl url = ServiceAddress::endpointURL(apiBaseURL, QStringLiteral("/v1/realtime"));
    url.setScheme(apiBaseURL.scheme().compare(u"https", Qt::CaseInsensitive) == 0 ? QStringLiteral("wss")
                                                                                  : QStringLiteral("ws"));
    url.setQuery(QStringLiteral("intent=transcription"));
    return url;
}

QByteArray LiveTranscription::sessionConfiguration(const LiveTranscriptionSettings &settings)
{
    // The same rules as the upload: no empty language, no blank prompt.
    QJsonObject transcription{{"model", settings.model}};
    if (settings.languageCode && !settings.languageCode->isEmpty())
        transcription.insert("language", *settings.languageCode);
    if (settings.prompt && !settings.prompt->trimmed().isEmpty())
        transcription.insert("prompt", *settings.prompt);
    const QJsonObject input{
        {"format", QJsonObject{{"type", "audio/pcm"}, {"rate", sampleRate}}},
        {"transcription", transcription},
        {"turn_detection", QJsonObject{{"type", "server_vad"}}},
    };
    const QJsonObject session{{"type", "transcription"}, {"audio", QJsonObject{{"input", input}}}};
    return compact({{"type", "session.update"}, {"session", session}});
}

void LiveTranscription::open(const QUrl &apiBaseURL, const QString &apiKey)
{
    // The key travels only where the upload would send it.
    if (ServiceAddress::refusalForAPIKey(apiBaseURL)) {
        fail(QStringLiteral("the address is not allowed to receive the key"));
        return;
    }
    QNetworkRequest request(realtimeURL(apiBaseURL));
    request.setRawHeader("Authorization", "Bearer " + apiKey.toUtf8());
    m_socket.open(request);
}

void LiveTranscription::configure(const LiveTranscriptionSettings &settings)
{
    m_configuration = sessionConfiguration(settings);
    if (m_connected)
        sendJson(*m_configuration);
}

void LiveTranscription::append(std::span<const std::int16_t> samples)
{
    if (m_failure || m_speechEnded)
        return; // the upload takes over, or this is after the release
    m_appendedSamples += qint64(samples.size());
    if (std::any_of(samples.begin(), samples.end(), [](std::int16_t sample) { return std::abs(sample) >= quietestSound; }))
        m_lastSoundAt = m_appendedSamples;
    m_pendingAudio.append(reinterpret_cast<const char *>(samples.data()), qsizetype(samples.size_bytes()));
    sendPendingAudio(false);
}

void LiveTranscription::commit()
{
    if (std::exchange(m_speechEnded, true))
        return;
    // Only silence since the service's last cut at a pause: its commit would add a
    // segment of silence to wait for, and invite a transcript of it.
    if (m_silenceSince && m_lastSoundAt <= *m_silenceSince) {
        m_pendingAudio.clear();
        return;
    }
    m_commitWanted = true;
    commitWhenPossible();
}

QCoro::Task<QString> LiveTranscription::finish()
{
    m_finishing = true;
    commit();
    m_deadline.start();
    checkSettled();
    // Emitted once only: QCoro's signal awaiter must not see a second emission.
    if (!m_settled)
        co_await qCoro(this, &LiveTranscription::settled);
    if (m_failure)
        throw LiveTranscriptionFailure{*m_failure};
    QStringList texts;
    for (const QString &segment : std::as_const(m_segmentOrder)) {
        if (const QString text = m_segmentTexts.value(segment).trimmed(); !text.isEmpty())
            texts.append(text);
    }
    qCInfo(lcLiveTranscription) << "finished with" << m_segmentOrder.size() << "segments";
    co_return texts.join(u' ');
}

void LiveTranscription::close()
{
    m_closing = true;
    if (m_socket.state() != QAbstractSocket::UnconnectedState)
        m_socket.close();
}

void LiveTranscription::sendJson(const QByteArray &message)
{
    m_socket.sendTextMessage(QString::fromUtf8(message));
}

void LiveTranscription::sendPendingAudio(bool all)
{
    if (!m_connected || !m_configuration || m_failure)
        return;
    while (m_pendingAudio.size() >= (all ? 1 : smallestAppendBytes)) {
        const qsizetype size = std::min(m_pendingAudio.size(), largestAppendBytes);
        const QByteArray audio = m_pendingAudio.left(size);
        m_pendingAudio.remove(0, size);
        sendJson(compact({{"type", "input_audio_buffer.append"}, {"audio", QString::fromLatin1(audio.toBase64())}}));
    }
}

void LiveTranscription::commitWhenPossible()
{
    if (!m_commitWanted || !m_connected || !m_configuration || m_failure)
        return;
    sendPendingAudio(true);
    m_commitWanted = false;
    // Always committed: only the service knows whether its cut at the last pause left
    // anything, and it answers an empty commit with an error that is no fault.
    sendJson(compact({{"type", "input_audio_buffer.commit"}}));
    m_commitAwaited = true;
    // Out now rather than at the event loop's next turn: the release has more to do first.
    m_socket.flush();
}

void LiveTranscription::handleMessage(const QString &message)
{
    const QJsonObject event = QJsonDocument::fromJson(message.toUtf8()).object();
    const QString type = event.value("type").toString();
    const QString segment = event.value("item_id").toString();
    if (type == u"input_audio_buffer.speech_started") {
        m_silenceSince.reset();
        return;
    } else if (type == u"input_audio_buffer.speech_stopped") {
        // Awaited from now on: the release may come before the service commits it.
        m_segmentsCutAtPauses.insert(segment);
        if (!m_segmentOrder.contains(segment))
            m_segmentOrder.append(segment);
        // The segment ends here, its closing silence included; what follows is uncommitted.
        const QJsonValue end = event.value("audio_end_ms");
        m_silenceSince = end.isDouble() ? std::optional(qint64(end.toDouble()) * sampleRate / 1000) : std::nullopt;
        return;
    } else if (type == u"input_audio_buffer.committed") {
        if (!m_segmentOrder.contains(segment))
            m_segmentOrder.append(segment);
        // A segment cut at a pause is announced by its speech_stopped; any other is the
        // answer to the commit at the release.
        if (!m_segmentsCutAtPauses.contains(segment))
            m_commitAwaited = false;
    } else if (type == u"conversation.item.input_audio_transcription.completed") {
        if (!m_segmentOrder.contains(segment))
            m_segmentOrder.append(segment);
        m_segmentTexts.insert(segment, event.value("transcript").toString());
    } else if (type == u"conversation.item.input_audio_transcription.failed") {
        fail(QStringLiteral("a segment's transcription failed"));
        return;
    } else if (type == u"error") {
        const QString code = event.value("error").toObject().value("code").toString();
        // The service cut the last segment at a pause as the commit went out: nothing was left.
        if (code == u"input_audio_buffer_commit_empty") {
            m_commitAwaited = false;
        } else {
            fail(QStringLiteral("the service sent error %1").arg(code));
            return;
        }
    } else {
        return;
    }
    checkSettled();
}

void LiveTranscription::fail(const QString &reason)
{
    if (m_failure)
        return;
    qCWarning(lcLiveTranscription) << "live transcription failed:" << reason;
    m_failure = reason;
    checkSettled();
}

bool LiveTranscription::isComplete() const
{
    if (!m_connected || m_commitWanted || m_commitAwaited)
        return false;
    return std::all_of(m_segmentOrder.begin(), m_segmentOrder.end(),
                       [this](const QString &segment) { return m_segmentTexts.contains(segment); });
}

void LiveTranscription::checkSettled()
{
    if (!m_finishing || m_settled || (!m_failure && !isComplete()))
        return;
    m_settled = true;
    m_deadline.stop();
    Q_EMIT settled();
}
