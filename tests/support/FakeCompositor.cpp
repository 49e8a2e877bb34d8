#include "FakeCompositor.h"

#include "platform/linux/wayland/WaylandConnection.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <mutex>

#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <wayland-server.h>

#include "ext-data-control-v1-server-protocol.h"
#include "fake-input-server-protocol.h"

struct FakeCompositor::Impl {
    wl_display *m_display = wl_display_create();
    std::thread m_thread;
    QList<wl_resource *> m_devices;
    wl_resource *m_selection = nullptr;
    QList<int> m_clientSockets;
    mutable std::mutex m_fakeInputMutex; // written on the compositor's thread
    QStringList m_fakeInput;

    Impl()
    {
        wl_global_create(m_display, &wl_seat_interface, 1, this, [](wl_client *client, void *, uint32_t version, uint32_t id) {
            static const struct wl_seat_interface seat = {[](wl_client *, wl_resource *, uint32_t) {},
                                                          [](wl_client *, wl_resource *, uint32_t) {},
                                                          [](wl_client *, wl_resource *, uint32_t) {}, nullptr};
            wl_resource_set_implementation(wl_resource_create(client, &wl_seat_interface, int(version), id), &seat, nullptr, nullptr);
        });
        wl_global_create(m_display, &ext_data_control_manager_v1_interface, 1, this,
                         [](wl_client *client, void *data, uint32_t version, uint32_t id) {
                             wl_resource *manager = wl_resource_create(client, &ext_data_control_manager_v1_interface, int(version), id);
                             wl_resource_set_implementation(manager, &managerImplementation, data, nullptr);
                         });
        wl_global_create(m_display, &org_kde_kwin_fake_input_interface, 4, this,
                         [](wl_client *client, void *data, uint32_t version, uint32_t id) {
                             wl_resource *input = wl_resource_create(client, &org_kde_kwin_fake_input_interface, int(version), id);
                             wl_resource_set_implementation(input, &fakeInputImplementation, data, nullptr);
                         });
        // Clients join before the loop runs: libwayland-server is not to be touched from two threads.
        for (int i = 0; i < 2; ++i) {
            int fds[2];
            socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds);
            wl_client_create(m_display, fds[0]);
            m_clientSockets.append(fds[1]);
        }
        m_thread = std::thread([this] { wl_display_run(m_display); });
    }
    ~Impl()
    {
        wl_display_terminate(m_display);
        m_thread.join();
        wl_display_destroy_clients(m_display);
        wl_display_destroy(m_display);
    }

    // A client connection as WAYLAND_SOCKET hands it over, which libwayland takes and unsets.
    std::shared_ptr<WaylandConnection> connect()
    {
        if (m_clientSockets.isEmpty())
            return nullptr;
        qputenv("WAYLAND_SOCKET", QByteArray::number(m_clientSockets.takeFirst()));
        return WaylandConnection::open();
    }

    struct Source {
        wl_resource *resource;
        QList<QByteArray> types;
    };

    static Impl *self(wl_resource *resource) { return static_cast<Impl *>(wl_resource_get_user_data(resource)); }
    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    void select(wl_resource *source)
    {
        if (m_selection && m_selection != source)
            ext_data_control_source_v1_send_cancelled(m_selection);
        m_selection = source;
        for (wl_resource *device : std::as_const(m_devices)) {
            wl_resource *offer = wl_resource_create(wl_resource_get_client(device), &ext_data_control_offer_v1_interface, 1, 0);
            wl_resource_set_implementation(offer, &offerImplementation, source, nullptr);
            ext_data_control_device_v1_send_data_offer(device, offer);
            for (const QByteArray &type : static_cast<Source *>(wl_resource_get_user_data(source))->types)
                ext_data_control_offer_v1_send_offer(offer, type.constData());
            ext_data_control_device_v1_send_selection(device, offer);
        }
    }

    void recordFakeInput(QString event)
    {
        const std::lock_guard lock(m_fakeInputMutex);
        m_fakeInput.append(std::move(event));
    }

    static constexpr struct org_kde_kwin_fake_input_interface fakeInputImplementation = {
        .authenticate = [](wl_client *, wl_resource *input, const char *, const char *) { self(input)->recordFakeInput("authenticated"); },
        .pointer_motion = nullptr,
        .button = nullptr,
        .axis = nullptr,
        .touch_down = nullptr,
        .touch_motion = nullptr,
        .touch_up = nullptr,
        .touch_cancel = nullptr,
        .touch_frame = nullptr,
        .pointer_motion_absolute = nullptr,
        .keyboard_key = [](wl_client *, wl_resource *input, uint32_t key, uint32_t state) { self(input)->recordFakeInput((state ? "+" : "-") + QString::number(key)); },
    };
    static constexpr struct ext_data_control_source_v1_interface sourceImplementation = {
        [](wl_client *, wl_resource *resource, const char *type) { static_cast<Source *>(wl_resource_get_user_data(resource))->types.append(type); },
        destroy};
    static constexpr struct ext_data_control_offer_v1_interface offerImplementation = {
        [](wl_client *, wl_resource *offer, const char *type, int32_t fd) {
            ext_data_control_source_v1_send_send(static_cast<wl_resource *>(wl_resource_get_user_data(offer)), type, fd);
            close(fd);
        },
        destroy};
    static constexpr struct ext_data_control_device_v1_interface deviceImplementation = {
        [](wl_client *, wl_resource *device, wl_resource *source) { self(device)->select(source); }, destroy, nullptr};
    static constexpr struct ext_data_control_manager_v1_interface managerImplementation = {
        [](wl_client *client, wl_resource *, uint32_t id) {
            wl_resource *source = wl_resource_create(client, &ext_data_control_source_v1_interface, 1, id);
            wl_resource_set_implementation(source, &sourceImplementation, new Source{source, {}},
                                           [](wl_resource *r) { delete static_cast<Source *>(wl_resource_get_user_data(r)); });
        },
        [](wl_client *client, wl_resource *manager, uint32_t id, wl_resource *) {
            wl_resource *device = wl_resource_create(client, &ext_data_control_device_v1_interface, 1, id);
            wl_resource_set_implementation(device, &deviceImplementation, self(manager), nullptr);
            self(manager)->m_devices.append(device);
        },
        destroy};
};

FakeCompositor::FakeCompositor()
    : d(std::make_unique<Impl>())
{
}

FakeCompositor::~FakeCompositor() = default;

std::shared_ptr<WaylandConnection> FakeCompositor::connect()
{
    return d->connect();
}

QStringList FakeCompositor::fakeInput() const
{
    const std::lock_guard lock(d->m_fakeInputMutex);
    return d->m_fakeInput;
}
