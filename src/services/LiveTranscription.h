#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

// What the realtime session transcribes with: the transcription model, the speech
// language and the dictionary prompt, as the upload would send them.
struct LiveTranscriptionSettings {
    QString model;
    std::optional<QString> languageCode;
    std::optional<QString> prompt;
};

// The live transcription of one dictation broke: the socket did not open or closed,
// the service sent an error, or no final transcript came in time. The recording file
// is still there, so the dictation goes on with the upload. `reason` is for the log.
struct LiveTranscriptionFailure {
    QString reason;
};

// One dictation streamed to the service's realtime transcription endpoint over a
// WebSocket, while it is being recorded: opened as the trigger goes down, configured
// when the recording starts, fed the recording as 24 kHz PCM, and finished at the
// release, when only the speech since the user's last pause is left to transcribe.
// The service cuts the speech into segments at pauses (server-side voice activity
// detection); the transcript is the segments' texts in order. Nothing stays connected
// after close().
class LiveTranscription : public QObject
{
    Q_OBJECT

public:
    // The only PCM rate the endpoint takes.
    static constexpr int sampleRate = 24000;
    static constexpr std::chrono::milliseconds defaultFinalTranscriptDeadline{5000};

    explicit LiveTranscription(std::chrono::milliseconds finalTranscriptDeadline = defaultFinalTranscriptDeadline,
                               QObject *parent = nullptr);
    ~LiveTranscription() override;

    // wss://<host>/v1/realtime?intent=transcription for an https base address; ws:// for http.
    static QUrl realtimeURL(const QUrl &apiBaseURL);
    // The session.update event that configures a transcription session.
    static QByteArray sessionConfiguration(const LiveTranscriptionSettings &settings);

    // Starts connecting to the realtime endpoint of the API base address; a refusal
    // (also of plain HTTP beyond this computer) shows as a failure at finish().
    void open(const QUrl &apiBaseURL, const QString &apiKey);
    // Sends the configuration as soon as the socket is open, before any audio.
    void configure(const LiveTranscriptionSettings &settings);
    // Mono 16-bit PCM at sampleRate; kept while the socket is still opening. Dropped
    // once the speech has ended.
    void append(std::span<const std::int16_t> samples);
    // The speech has ended (the release): what is held back goes out with the commit of
    // the speech not yet committed, at once or as soon as the socket is open. Nothing is
    // committed when all since the service's last cut at a pause is silence.
    void commit();
    // Commits (when commit() has not) and waits for every segment's transcript, at most
    // the deadline. Throws LiveTranscriptionFailure.
    QCoro::Task<QString> finish();
    // Closes the socket; what is still on its way is dropped.
    void close();

Q_SIGNALS:
    // Once, when finish() has all it waits for, or the transcription broke.
    void settled();

private:
    void sendJson(const QByteArray &message);
    void sendPendingAudio(bool all);
    void commitWhenPossible();
    void handleMessage(const QString &message);
    void fail(const QString &reason);
    [[nodiscard]] bool isComplete() const;
    void checkSettled();

    QWebSocket m_socket;
    QTimer m_deadline;
    bool m_finishing = false;
    bool m_settled = false;
    std::optional<QByteArray> m_configuration;
    bool m_connected = false;
    bool m_closing = false;
    QByteArray m_pendingAudio;
    bool m_speechEnded = false;
    // In samples appended: the end of the last audio loud enough to be speech, and where
    // the service last cut a segment at a pause while it has heard no speech since.
    qint64 m_appendedSamples = 0;
    qint64 m_lastSoundAt = 0;
    std::optional<qint64> m_silenceSince;
    bool m_commitWanted = false;
    bool m_commitAwaited = false;
    QStringList m_segmentOrder;
    QHash<QString, QString> m_segmentTexts;
    QSet<QString> m_segmentsCutAtPauses;
    std::optional<QString> m_failure;
};
