#include "FakeRealtimeServer.h"

#include <QJsonDocument>
#include <QTimer>

FakeRealtimeServer::FakeRealtimeServer(QObject *parent)
    : QObject(parent)
    , m_server(QStringLiteral("fake realtime"), QWebSocketServer::NonSecureMode)
{
    connect(&m_server, &QWebSocketServer::newConnection, this, [this] {
        delete m_socket; // one dictation at a time, each on a socket of its own
        m_socket = m_server.nextPendingConnection();
        m_receivedSamples = m_uncommittedSamples = m_receivedBytes = 0;
        m_nextPause = m_transcribed = 0;
        m_requestURL = m_socket->requestUrl();
        m_authorization = m_socket->request().rawHeader("Authorization");
        connect(m_socket, &QWebSocket::textMessageReceived, this, &FakeRealtimeServer::handle);
    });
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        qFatal("FakeRealtimeServer: cannot listen on 127.0.0.1: %s", qPrintable(m_server.errorString()));
}

FakeRealtimeServer::~FakeRealtimeServer()
{
    delete m_socket;
}

void FakeRealtimeServer::handle(const QString &message)
{
    m_receivedBytes += message.toUtf8().size();
    const QJsonObject event = QJsonDocument::fromJson(message.toUtf8()).object();
    const QString type = event.value("type").toString();
    if (type == u"session.update") {
        m_configuration = event.value("session").toObject();
    } else if (type == u"input_audio_buffer.append") {
        const qint64 samples = QByteArray::fromBase64(event.value("audio").toString().toLatin1()).size() / 2;
        const bool first = m_receivedSamples == 0;
        m_receivedSamples += samples;
        m_uncommittedSamples += samples;
        if (fault == Fault::errorEvent && first)
            send({{"type", "error"}, {"error", QJsonObject{{"type", "server_error"}, {"code", "server_error"}}}});
        if (fault == Fault::closeMidDictation && m_receivedSamples >= 12000)
            m_socket->close(QWebSocketProtocol::CloseCodeAbnormalDisconnection);
        while (m_nextPause < pauses.size() && pauses[m_nextPause].afterSamples <= m_receivedSamples)
            commitSegment(pauses[m_nextPause++].text, true, true);
    } else if (type == u"input_audio_buffer.commit") {
        if (m_uncommittedSamples < 2400)
            send({{"type", "error"}, {"error", QJsonObject{{"code", "input_audio_buffer_commit_empty"}}}});
        else
            commitSegment(finalText, fault != Fault::noFinalTranscript, false);
    }
}

void FakeRealtimeServer::commitSegment(const QString &text, bool transcribe, bool atPause)
{
    const QString item = QStringLiteral("item_%1").arg(++m_segments);
    if (atPause)
        send({{"type", "input_audio_buffer.speech_stopped"}, {"item_id", item}});
    const double seconds = double(m_uncommittedSamples) / 24000;
    m_uncommittedSamples = 0;
    send({{"type", "input_audio_buffer.committed"}, {"item_id", item}});
    if (!transcribe)
        return;
    const int delay = millisecondsPerSegment + int(secondsPerAudioSecond * seconds * 1000);
    QTimer::singleShot(delay, Qt::PreciseTimer, this, [this, item, text] {
        ++m_transcribed;
        send({{"type", "conversation.item.input_audio_transcription.completed"}, {"item_id", item},
              {"content_index", 0}, {"transcript", text}});
    });
}

void FakeRealtimeServer::send(const QJsonObject &event)
{
    if (m_socket)
        m_socket->sendTextMessage(QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact)));
}
