#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <QCoro/QCoroTask>

#include <chrono>
#include <cstdint>
#include <memory>

class QSocketNotifier;
struct wl_display;
struct wl_interface;
struct wl_registry;
struct wl_seat;

// A Wayland connection of Quorla's own, beside Qt's: the compositor's privileged protocols
// (data control, virtual keyboards) are bound here, and its events are dispatched from the
// main event loop.
class WaylandConnection : public QObject
{
    Q_OBJECT

public:
    // Connects to `display` (by default $WAYLAND_DISPLAY, else the default socket) and learns the compositor's globals,
    // waiting at most a moment for the answer, once at start-up; null when none answers.
    static std::shared_ptr<WaylandConnection> open(const QByteArray &display = {});
    ~WaylandConnection() override;

    [[nodiscard]] wl_display *display() const { return m_display; }
    // The first seat; null when the compositor has none.
    [[nodiscard]] wl_seat *seat() const { return m_seat; }
    [[nodiscard]] bool offers(const char *interface) const;
    // The global bound at the lower of its version and `version`; null when not offered.
    void *bind(const wl_interface *interface, uint32_t version) const;
    // Sends what is queued; false once the connection is broken.
    bool flush();
    // Resumes once the compositor has answered everything sent before; false when it does
    // not answer within the limit or the connection is broken.
    QCoro::Task<bool> sync(std::chrono::milliseconds limit = std::chrono::milliseconds{2000});
    // True once the compositor closed the connection or reported a protocol error.
    [[nodiscard]] bool isBroken() const;

Q_SIGNALS:
    void callbackDone(void *callback);

private:
    struct Global {
        uint32_t name;
        QString interface;
        uint32_t version;
    };

    explicit WaylandConnection(wl_display *display);
    bool roundtripWithin(std::chrono::milliseconds limit);
    void dispatch();

    static void global(void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t version);
    static void globalRemove(void *data, wl_registry *registry, uint32_t name);

    wl_display *m_display;
    wl_registry *m_registry = nullptr;
    wl_seat *m_seat = nullptr;
    QList<Global> m_globals;
    QSocketNotifier *m_notifier = nullptr;
};
