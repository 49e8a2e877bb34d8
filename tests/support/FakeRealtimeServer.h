#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QWebSocket>
#include <QWebSocketServer>

// The realtime transcription endpoint on 127.0.0.1 for tests and benchmarks: takes the
// session configuration and the audio, cuts segments where the script puts the
// speaker's pauses, transcribes each after a delay that grows with its audio, and
// misbehaves on demand.
class FakeRealtimeServer : public QObject
{
    Q_OBJECT

public:
    enum class Fault { none,
                       closeMidDictation, // closes the socket once half a second of audio is in
                       errorEvent,        // sends an error event after the first audio
                       noFinalTranscript  // commits the release's segment, never transcribes it
    };
    struct Pause {
        qint64 afterSamples; // the segment ends once this much audio (24 kHz) came in
        QString text;
    };

    explicit FakeRealtimeServer(QObject *parent = nullptr);
    ~FakeRealtimeServer() override;

    // http://127.0.0.1:<port>, as the API base address.
    [[nodiscard]] QUrl baseURL() const { return QUrl("http://127.0.0.1:" + QString::number(m_server.serverPort())); }

    QList<Pause> pauses;
    QString finalText = QStringLiteral("Hello from the live server.");
    Fault fault = Fault::none;
    // A segment's transcript comes this long after its commit: fixed plus per second of audio.
    int millisecondsPerSegment = 0;
    double secondsPerAudioSecond = 0;

    [[nodiscard]] const QJsonObject &configuration() const { return m_configuration; }
    [[nodiscard]] const QUrl &requestURL() const { return m_requestURL; }
    [[nodiscard]] const QByteArray &authorization() const { return m_authorization; }
    [[nodiscard]] qint64 receivedSamples() const { return m_receivedSamples; }
    // Bytes of the messages of the current socket.
    [[nodiscard]] qint64 receivedBytes() const { return m_receivedBytes; }
    [[nodiscard]] int transcribedSegments() const { return m_transcribed; }

private:
    void handle(const QString &message);
    void commitSegment(const QString &text, bool transcribe, bool atPause);
    void send(const QJsonObject &event);

    QWebSocketServer m_server;
    QPointer<QWebSocket> m_socket;
    QJsonObject m_configuration;
    QUrl m_requestURL;
    QByteArray m_authorization;
    qint64 m_receivedSamples = 0;
    qint64 m_uncommittedSamples = 0;
    qint64 m_receivedBytes = 0;
    int m_nextPause = 0;
    int m_segments = 0;
    int m_transcribed = 0;
};
