#include "WindowModelHost.h"

#include "app/WindowModel.h"

#include <QMetaMethod>
#include <QMetaProperty>

using namespace WindowLink;

WindowModelHost::WindowModelHost(WindowModel &model, QLocalSocket *socket, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_link(socket, "Quorla")
{
    connect(&m_link, &WindowLinkSocket::frameReceived, this, &WindowModelHost::handle);
    connect(&m_link, &WindowLinkSocket::disconnected, this, &WindowModelHost::disconnected);

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
            [this] { m_link.send(frame(Message::signal, QByteArray("customDictionaryEntryAdded"))); });
    sendProperties(-1);
    m_link.readFrames();
}

WindowModelHost::~WindowModelHost() = default;

bool WindowModelHost::isConnected() const
{
    return m_link.isConnected();
}

void WindowModelHost::requestShow()
{
    m_link.send(frame(Message::show));
}

void WindowModelHost::requestClose()
{
    m_link.send(frame(Message::close));
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
    m_link.send(frame(Message::properties, values));
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
            return m_link.drop("an unreadable write");
        const QMetaProperty property = meta.property(index);
        property.write(&m_model, value);
        m_link.send(frame(Message::writeDone, name, property.read(&m_model)));
        return;
    }
    case Message::request: {
        Request request{};
        QVariantList arguments;
        in >> request >> arguments;
        if (in.status() != QDataStream::Ok)
            return m_link.drop("an unreadable request");
        perform(request, arguments);
        return;
    }
    case Message::shown:
        Q_EMIT windowShown();
        return;
    default:
        return m_link.drop("an unknown message");
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
    m_link.drop("an unknown request");
}
