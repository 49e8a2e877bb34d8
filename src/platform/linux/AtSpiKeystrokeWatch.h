#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

class QDBusVirtualObject;

// Key presses that applications report to the accessibility bus, heard only while watching.
// Under Wayland this is the one way to learn that another key met a held trigger, and only
// toolkits with an accessibility bridge (GTK, Qt) report them; others stay silent. Nothing
// is read from the keys but that one went down. Everything is asynchronous; without an
// accessibility bus nothing is ever heard.
class AtSpiKeystrokeWatch : public QObject
{
    Q_OBJECT

public:
    explicit AtSpiKeystrokeWatch(QObject *parent = nullptr);
    ~AtSpiKeystrokeWatch() override;

    void start();
    void stop();

Q_SIGNALS:
    // A key went down in an application while watching.
    void keyPressed();

private:
    void connectBus();
    void setRegistered(bool registered);

    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusVirtualObject> m_listener;
    bool m_connecting = false;
    bool m_wanted = false;
    bool m_registered = false;
};
