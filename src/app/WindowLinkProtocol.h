#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QVariant>
#include <optional>

// The messages between the dictating process and its window's process: one stream
// socket, each message a length-prefixed QDataStream frame that begins with its kind.
namespace WindowLink {

enum class Message : quint8 {
    // dictating process -> window
    properties = 1, // QList<QPair<QByteArray, QVariant>>: property name and value
    signal,         // QByteArray: a model signal that carries no property
    writeDone,      // QByteArray name, QVariant value: a write was applied; this is the value now
    show,           // bring the window to the front
    close,          // close the window as the user would
    // window -> dictating process
    write,          // QByteArray name, QVariant value
    request,        // Request, QVariantList arguments
    shown,          // the window drew its first frame, or came to the front
};

// The model's requests, by what they ask for.
enum class Request : quint8 {
    startAppServices = 1,
    refreshPermissions,
    requestAccessibilityAccess,
    openSettingsPane,
    saveAPIKey,
    clearAPIKey,
    clearCustomDictionary,
    clearTranscript,
    checkForUpdates,
    quitApplication,
    submitCustomDictionaryEntry,
    removeCustomDictionaryEntry,
    copyTranscript,
    startManualRecording,
    stopRecordingAndTranscribe,
    checkForAppUpdate,
};

using PropertyValues = QList<QPair<QByteArray, QVariant>>;

// Builds one frame: the kind, then whatever the caller streams into it.
template <typename... Fields>
QByteArray frame(Message kind, const Fields &...fields)
{
    QByteArray body;
    QDataStream out(&body, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_4);
    out << kind;
    ((out << fields), ...);
    return body;
}

// Writes one frame with its length in front.
inline void send(QIODevice &device, const QByteArray &body)
{
    QByteArray framed;
    QDataStream out(&framed, QIODevice::WriteOnly);
    out << body;
    device.write(framed);
}

// The next whole frame on the device, or nothing while it is still arriving.
inline std::optional<QByteArray> nextFrame(QIODevice &device)
{
    QDataStream in(&device);
    in.startTransaction();
    QByteArray body;
    in >> body;
    if (!in.commitTransaction())
        return std::nullopt;
    return body;
}

} // namespace WindowLink
