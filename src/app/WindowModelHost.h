#pragma once

#include "app/WindowLinkProtocol.h"
#include "app/WindowLinkSocket.h"

#include <QObject>

class QLocalSocket;
class WindowModel;

// Serves the model to a window in another process over a connected socket: every
// property at once, then each change as it happens; applies the window's writes and
// carries out its requests. Anything it cannot read ends the link.
class WindowModelHost : public QObject
{
    Q_OBJECT

public:
    // Takes the socket; the link lives until either side closes it.
    WindowModelHost(WindowModel &model, QLocalSocket *socket, QObject *parent = nullptr);
    ~WindowModelHost() override;

    [[nodiscard]] bool isConnected() const;
    void requestShow();
    void requestClose();

Q_SIGNALS:
    // The window drew its first frame, or came to the front when asked to show.
    void windowShown();
    void disconnected();

private Q_SLOTS:
    // Sends the properties the signal that called it announces.
    void propertiesChanged();

private:
    void handle(const QByteArray &body);
    void perform(WindowLink::Request request, const QVariantList &arguments);
    void sendProperties(int notifySignalIndex);

    WindowModel &m_model;
    WindowLinkSocket m_link;
};
