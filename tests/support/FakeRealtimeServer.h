#pragma once

#include "FakeOpenAIServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>
#include <chrono>

// The realtime transcription endpoint on 127.0.0.1 for tests and benchmarks: records
// the request and the session configuration, takes the audio, cuts a segment where
// the script puts a pause, transcribes each segment after a delay that grows with its
// audio, and misbehaves on demand. One dictation (socket) at a time.
class FakeRealtimeServer : public QObject
{
public:
    enum class Fault { none,
                       closeMidDictation, // closes once half a second of audio is in
                       errorEvent,        // an error event after the first audio
                       noFinalTranscript  // commits the release's segment, never transcribes it
    };
    struct Pause {
        qint64 afterSamples; // of 24 kHz audio received
        QString text;
    };

    FakeRealtimeServer()
    {
        connect(&m_server, &QWebSocketServer::newConnection, this, [this] {
            delete m_socket;
            m_socket = m_server.nextPendingConnection();
            m_socket->setParent(this);
            requestURL = m_socket->requestUrl();
            authorization = m_socket->request().rawHeader("Authorization");
            receivedSamples = uncommittedSamples = receivedBytes = nextPause = segments = transcribed = 0;
            connect(m_socket, &QWebSocket::textMessageReceived, this, &FakeRealtimeServer::handle);
        });
        if (!m_server.listen(QHostAddress::LocalHost, 0))
            qFatal("FakeRealtimeServer: cannot listen on 127.0.0.1");
    }

    // Answers the handshakes that reach http too, behind http's base address.
    void serveAlongside(FakeOpenAIServer &http)
    {
        http.webSocketUpgrades = [this](QTcpSocket *socket) { m_server.handleConnection(socket); };
    }

    // As the API base address.
    [[nodiscard]] QUrl baseURL() const { return QUrl("http://127.0.0.1:" + QString::number(m_server.serverPort())); }

    QList<Pause> pauses;
    QString finalText = QStringLiteral("Hello from the live server.");
    Fault fault = Fault::none;
    int millisecondsPerSegment = 0;
    double secondsPerAudioSecond = 0;

    QUrl requestURL;
    QByteArray authorization;
    QJsonObject configuration;
    qint64 receivedSamples = 0, uncommittedSamples = 0, receivedBytes = 0;
    int nextPause = 0, segments = 0, transcribed = 0;
    std::chrono::steady_clock::time_point commitReceivedAt, transcriptSentAt, cutAt; // the last ones

private:
    void handle(const QString &message)
    {
        receivedBytes += message.toUtf8().size();
        const QJsonObject event = QJsonDocument::fromJson(message.toUtf8()).object();
        const QString type = event["type"].toString();
        if (type == u"input_audio_buffer.commit")
            commitReceivedAt = std::chrono::steady_clock::now();
        if (type == u"session.update") {
            configuration = event["session"].toObject();
        } else if (type == u"input_audio_buffer.append") {
            if (fault == Fault::errorEvent && receivedSamples == 0)
                send({{"type", "error"}, {"error", QJsonObject{{"code", "server_error"}}}});
            receivedSamples += QByteArray::fromBase64(event["audio"].toString().toLatin1()).size() / 2;
            uncommittedSamples += QByteArray::fromBase64(event["audio"].toString().toLatin1()).size() / 2;
            if (fault == Fault::closeMidDictation && receivedSamples >= 12000)
                m_socket->close(QWebSocketProtocol::CloseCodeAbnormalDisconnection);
            while (nextPause < pauses.size() && pauses[nextPause].afterSamples <= receivedSamples) {
                cutAt = std::chrono::steady_clock::now();
                send({{"type", "input_audio_buffer.speech_stopped"}, {"item_id", QString::number(segments + 1)}, {"audio_end_ms", receivedSamples / 24}});
                commit(pauses[nextPause++].text);
            }
        } else if (type == u"input_audio_buffer.commit" && uncommittedSamples < 2400) {
            send({{"type", "error"}, {"error", QJsonObject{{"code", "input_audio_buffer_commit_empty"}}}});
        } else if (type == u"input_audio_buffer.commit") {
            commit(fault == Fault::noFinalTranscript ? std::optional<QString>() : finalText);
        }
    }
    void commit(const std::optional<QString> &text)
    {
        const QString item = QString::number(++segments);
        const int delay = millisecondsPerSegment + int(secondsPerAudioSecond * uncommittedSamples / 24);
        uncommittedSamples = 0;
        send({{"type", "input_audio_buffer.committed"}, {"item_id", item}});
        if (text)
            QTimer::singleShot(delay, Qt::PreciseTimer, this, [this, item, text] {
                ++transcribed;
                transcriptSentAt = std::chrono::steady_clock::now();
                send({{"type", "conversation.item.input_audio_transcription.completed"}, {"item_id", item}, {"transcript", *text}});
            });
    }
    void send(const QJsonObject &event)
    {
        if (m_socket)
            m_socket->sendTextMessage(QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact)));
    }

    QWebSocketServer m_server{QStringLiteral("fake realtime"), QWebSocketServer::NonSecureMode};
    QPointer<QWebSocket> m_socket;
};
