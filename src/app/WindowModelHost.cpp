#include "WindowModelHost.h"

#include "app/WindowModel.h"

#include <QLocalSocket>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QMetaProperty>

Q_LOGGING_CATEGORY(lcWindowHost, "quorla.window.host")

using namespace WindowLink;

WindowModelHost::WindowModelHost(WindowModel &model, QLocalSocket *socket, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_socket(socket)
{
    m_socket->setParent(this);
    connect(m_socket, &QLocalSocket::readyRead, this, &WindowModelHost::readFrames);
    connect(m_socket, &QLocalSocket::disconnected, this, &WindowModelHost::disconnected);

    // One connection per notify signal; the slot asks which one fired.
    const QMetaObject &meta = WindowModel::staticMetaObject;
    const int slot = metaObject()->indexOfMethod("propertiesChanged()");
    QList<int> connected;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const int signal = meta.property(i).notifySignalIndex();
        if (signal >= 0 && !connected.contains(signal)) {
            QMetaObject::connect(&m_model, signal, this, slot);
            connected.append(signal);
        }
    }
    connect(&m_model, &WindowModel::customDictionaryEntryAdded, this,
            [this] { send(frame(Message::signal, QByteArray("customDictionaryEntryAdded"))); });
    sendProperties(-1);
    // Frames that arrived with the socket.
    readFrames();
}

WindowModelHost::~WindowModelHost() = default;

bool WindowModelHost::isConnected() const
{
    return m_socket && m_socket->state() == QLocalSocket::ConnectedState;
}

void WindowModelHost::requestShow()
{
    send(frame(Message::show));
}

void WindowModelHost::requestClose()
{
    send(frame(Message::close));
}

void WindowModelHost::propertiesChanged()
{
    sendProperties(senderSignalIndex());
}

// Every property announced by the given signal; all of them for -1.
void WindowModelHost::sendProperties(int notifySignalIndex)
{
    const QMetaObject &meta = WindowModel::staticMetaObject;
    PropertyValues values;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        if (property.isConstant())
            continue;
        if (notifySignalIndex < 0 || property.notifySignalIndex() == notifySignalIndex)
            values.append({QByteArray(property.name()), property.read(&m_model)});
    }
    send(frame(Message::properties, values));
}

void WindowModelHost::send(const QByteArray &body)
{
    if (isConnected())
        WindowLink::send(*m_socket, body);
}

void WindowModelHost::drop(const char *why)
{
    qCWarning(lcWindowHost) << "closing the window's link:" << why;
    if (m_socket)
        m_socket->abort();
}

void WindowModelHost::readFrames()
{
    while (m_socket && m_socket->bytesAvailable() > 0) {
        const std::optional<QByteArray> body = nextFrame(*m_socket);
        if (!body)
            return;
        handle(*body);
    }
}

void WindowModelHost::handle(const QByteArray &body)
{
    QDataStream in(body);
    in.setVersion(QDataStream::Qt_6_4);
    Message kind{};
    in >> kind;
    switch (kind) {
    case Message::write: {
        QByteArray name;
        QVariant value;
        in >> name >> value;
        const QMetaObject &meta = WindowModel::staticMetaObject;
        const int index = meta.indexOfProperty(name.constData());
        if (in.status() != QDataStream::Ok || index < meta.propertyOffset() || !meta.property(index).isWritable())
            return drop("an unreadable write");
        const QMetaProperty property = meta.property(index);
        property.write(&m_model, value);
        send(frame(Message::writeDone, name, property.read(&m_model)));
        return;
    }
    case Message::request: {
        Request request{};
        QVariantList arguments;
        in >> request >> arguments;
        if (in.status() != QDataStream::Ok)
            return drop("an unreadable request");
        perform(request, arguments);
        return;
    }
    case Message::shown:
        Q_EMIT windowShown();
        return;
    default:
        return drop("an unknown message");
    }
}

void WindowModelHost::perform(Request request, const QVariantList &arguments)
{
    switch (request) {
    case Request::startAppServices:
        return m_model.startAppServices();
    case Request::refreshPermissions:
        return m_model.refreshPermissions(arguments.value(0).toBool());
    case Request::requestAccessibilityAccess:
        return m_model.requestAccessibilityAccess();
    case Request::openSettingsPane:
        return m_model.openSettingsPane(arguments.value(0).toString());
    case Request::saveAPIKey:
        return m_model.saveAPIKey();
    case Request::clearAPIKey:
        return m_model.clearAPIKey();
    case Request::clearCustomDictionary:
        return m_model.clearCustomDictionary();
    case Request::clearTranscript:
        return m_model.clearTranscript();
    case Request::checkForUpdates:
        return m_model.checkForUpdates();
    case Request::quitApplication:
        return m_model.quitApplication();
    case Request::submitCustomDictionaryEntry: {
        const QVariant replacement = arguments.value(1);
        return m_model.submitCustomDictionaryEntry(
            arguments.value(0).toString(), replacement.isValid() ? std::optional(replacement.toString()) : std::nullopt,
            arguments.value(2).toBool());
    }
    case Request::removeCustomDictionaryEntry:
        if (arguments.value(0).canConvert<CustomDictionaryEntry>())
            m_model.removeCustomDictionaryEntry(arguments.value(0).value<CustomDictionaryEntry>());
        return;
    case Request::copyTranscript:
        if (arguments.value(0).canConvert<TranscriptEntry>())
            m_model.copyTranscript(arguments.value(0).value<TranscriptEntry>());
        return;
    case Request::startManualRecording:
        m_model.startManualRecording();
        return;
    case Request::stopRecordingAndTranscribe:
        m_model.stopRecordingAndTranscribe();
        return;
    case Request::checkForAppUpdate:
        m_model.checkForAppUpdate();
        return;
    }
    drop("an unknown request");
}
