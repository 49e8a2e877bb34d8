#include "RemoteWindowModel.h"

#include "support/PlatformWords.h"

#include <QMetaMethod>
#include <QMetaProperty>

using namespace WindowLink;

RemoteWindowModel::RemoteWindowModel(QLocalSocket *socket, QObject *parent)
    : WindowModel(PlatformWords::current(), parent)
    , m_link(socket, "The window")
{
    connect(&m_link, &WindowLinkSocket::frameReceived, this, &RemoteWindowModel::handle);
    connect(&m_link, &WindowLinkSocket::disconnected, this, &RemoteWindowModel::linkLost);
    m_link.readFrames();
}

RemoteWindowModel::~RemoteWindowModel() = default;

void RemoteWindowModel::reportShown()
{
    m_link.send(frame(Message::shown));
}

void RemoteWindowModel::write(const char *name, const QVariant &value)
{
    const QByteArray key(name);
    apply({{key, value}});
    ++m_pendingWrites[key];
    m_link.send(frame(Message::write, key, value));
}

void RemoteWindowModel::request(Request request, const QVariantList &arguments)
{
    m_link.send(frame(Message::request, request, arguments));
}

void RemoteWindowModel::handle(const QByteArray &body)
{
    QDataStream in(body);
    in.setVersion(QDataStream::Qt_6_4);
    Message kind{};
    in >> kind;
    switch (kind) {
    case Message::properties: {
        PropertyValues values;
        in >> values;
        if (in.status() != QDataStream::Ok)
            return m_link.drop("unreadable properties");
        // A value sent before our own write was applied there would undo it.
        values.removeIf([this](const auto &value) { return m_pendingWrites.value(value.first) > 0; });
        apply(values);
        if (!m_ready) {
            m_ready = true;
            Q_EMIT ready();
        }
        return;
    }
    case Message::writeDone: {
        QByteArray name;
        QVariant value;
        in >> name >> value;
        if (in.status() != QDataStream::Ok)
            return m_link.drop("an unreadable write");
        if (--m_pendingWrites[name] <= 0) {
            m_pendingWrites.remove(name);
            apply({{name, value}});
        }
        return;
    }
    case Message::signal: {
        QByteArray name;
        in >> name;
        if (name == "customDictionaryEntryAdded")
            Q_EMIT customDictionaryEntryAdded();
        return;
    }
    case Message::show:
        Q_EMIT showRequested();
        return;
    case Message::close:
        Q_EMIT closeRequested();
        return;
    default:
        return m_link.drop("an unknown message");
    }
}

void RemoteWindowModel::apply(const PropertyValues &values)
{
    const QMetaObject &meta = WindowModel::staticMetaObject;
    QList<int> changedSignals;
    for (const auto &[name, value] : values) {
        const int index = meta.indexOfProperty(name.constData());
        if (index < meta.propertyOffset())
            continue;
        auto existing = m_values.find(name);
        if (existing != m_values.end() && *existing == value)
            continue;
        m_values.insert(name, value);
        const int signal = meta.property(index).notifySignalIndex();
        if (signal >= 0 && !changedSignals.contains(signal))
            changedSignals.append(signal);
    }
    for (const int signal : changedSignals)
        meta.method(signal).invoke(this, Qt::DirectConnection);
}

void RemoteWindowModel::startAppServices()
{
    request(Request::startAppServices);
}

void RemoteWindowModel::refreshPermissions(bool refreshInputLanguage)
{
    request(Request::refreshPermissions, {refreshInputLanguage});
}

void RemoteWindowModel::requestAccessibilityAccess()
{
    request(Request::requestAccessibilityAccess);
}

void RemoteWindowModel::openSettingsPane(const QString &anchor)
{
    request(Request::openSettingsPane, {anchor});
}

void RemoteWindowModel::saveAPIKey()
{
    request(Request::saveAPIKey);
}

void RemoteWindowModel::clearAPIKey()
{
    request(Request::clearAPIKey);
}

void RemoteWindowModel::clearCustomDictionary()
{
    request(Request::clearCustomDictionary);
}

void RemoteWindowModel::clearTranscript()
{
    request(Request::clearTranscript);
}

void RemoteWindowModel::checkForUpdates()
{
    request(Request::checkForUpdates);
}

void RemoteWindowModel::quitApplication()
{
    request(Request::quitApplication);
}

void RemoteWindowModel::submitCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                                    bool replacementEnabled)
{
    request(Request::submitCustomDictionaryEntry,
            {term, replacement ? QVariant(*replacement) : QVariant(), replacementEnabled});
}

void RemoteWindowModel::removeCustomDictionaryEntry(const CustomDictionaryEntry &entry)
{
    request(Request::removeCustomDictionaryEntry, {QVariant::fromValue(entry)});
}

void RemoteWindowModel::copyTranscript(const TranscriptEntry &entry)
{
    request(Request::copyTranscript, {QVariant::fromValue(entry)});
}

QCoro::Task<> RemoteWindowModel::startManualRecording()
{
    request(Request::startManualRecording);
    co_return;
}

QCoro::Task<> RemoteWindowModel::stopRecordingAndTranscribe()
{
    request(Request::stopRecordingAndTranscribe);
    co_return;
}

QCoro::Task<> RemoteWindowModel::checkForAppUpdate()
{
    request(Request::checkForAppUpdate);
    co_return;
}
