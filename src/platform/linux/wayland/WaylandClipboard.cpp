#include "WaylandClipboard.h"

#include "DataTransfer.h"
#include "WaylandConnection.h"

#include <QHash>
#include <QLoggingCategory>
#include <QPointer>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "ext-data-control-v1-client-protocol.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"

Q_LOGGING_CATEGORY(lcWaylandClipboard, "quorla.wayland.clipboard")

namespace {

using Selection = Clipboard::Selection;

// KDE's marker, honoured by the common clipboard managers: they do not record the transcript.
const QString passwordManagerHint = QStringLiteral("x-kde-passwordManagerHint");
// The names text goes by: Wayland toolkits ask for the first ones, Xwayland bridges the others.
const QStringList textTypes = {
    QStringLiteral("text/plain;charset=utf-8"),
    QStringLiteral("text/plain"),
    QStringLiteral("UTF8_STRING"),
    QStringLiteral("STRING"),
    QStringLiteral("TEXT"),
};
// An owner that sends nothing for this long, or more than this, is not waited for.
constexpr std::chrono::milliseconds readLimit{2000};
constexpr qsizetype readMaxBytes = qsizetype{256} * 1024 * 1024;

// The two protocols are the same protocol under two names: one set of code over both.
#define QUORLA_DATA_CONTROL(Name, prefix, managerVersion)                                                                   \
    struct Name {                                                                                                           \
        using Manager = prefix##_manager_v1;                                                                                \
        using Device = prefix##_device_v1;                                                                                  \
        using Source = prefix##_source_v1;                                                                                  \
        using Offer = prefix##_offer_v1;                                                                                    \
        using DeviceListener = prefix##_device_v1_listener;                                                                 \
        using SourceListener = prefix##_source_v1_listener;                                                                 \
        using OfferListener = prefix##_offer_v1_listener;                                                                   \
        static constexpr uint32_t version = managerVersion;                                                                 \
        static const wl_interface *manager() { return &prefix##_manager_v1_interface; }                                     \
        static Device *device(Manager *m, wl_seat *seat) { return prefix##_manager_v1_get_data_device(m, seat); }           \
        static Source *source(Manager *m) { return prefix##_manager_v1_create_data_source(m); }                             \
        static void destroy(Manager *m) { prefix##_manager_v1_destroy(m); }                                                 \
        static void destroy(Device *d) { prefix##_device_v1_destroy(d); }                                                   \
        static void destroy(Source *s) { prefix##_source_v1_destroy(s); }                                                   \
        static void destroy(Offer *o) { prefix##_offer_v1_destroy(o); }                                                     \
        static void listen(Device *d, const DeviceListener *l, void *data) { prefix##_device_v1_add_listener(d, l, data); } \
        static void listen(Source *s, const SourceListener *l, void *data) { prefix##_source_v1_add_listener(s, l, data); } \
        static void listen(Offer *o, const OfferListener *l, void *data) { prefix##_offer_v1_add_listener(o, l, data); }    \
        static void offer(Source *s, const char *type) { prefix##_source_v1_offer(s, type); }                               \
        static void receive(Offer *o, const char *type, int fd) { prefix##_offer_v1_receive(o, type, fd); }                 \
        static void select(Device *d, Source *s) { prefix##_device_v1_set_selection(d, s); }                                \
        static void selectPrimary(Device *d, Source *s) { prefix##_device_v1_set_primary_selection(d, s); }                 \
    };

QUORLA_DATA_CONTROL(ExtDataControl, ext_data_control, 1)
QUORLA_DATA_CONTROL(WlrDataControl, zwlr_data_control, 2)
#undef QUORLA_DATA_CONTROL

} // namespace

class WaylandClipboard::Protocol : public QObject
{
public:
    virtual QCoro::Task<ClipboardFormats> read(Selection selection) = 0;
    // `markedText`: the text written kept out of history, remembered to recognize it later.
    virtual bool write(Selection selection, const ClipboardFormats &formats, std::optional<QString> markedText) = 0;
    [[nodiscard]] virtual bool holdsText(Selection selection, const QString &text) const = 0;
    [[nodiscard]] virtual bool hasPrimarySelection() const = 0;
};

namespace {

template <class P>
class DataControl final : public WaylandClipboard::Protocol
{
public:
    DataControl(std::shared_ptr<WaylandConnection> connection, typename P::Manager *manager)
        : m_connection(std::move(connection))
        , m_manager(manager)
        , m_device(P::device(manager, m_connection->seat()))
    {
        static const typename P::DeviceListener listener = {
            .data_offer = &DataControl::offerIntroduced,
            .selection = [](void *data, typename P::Device *, typename P::Offer *offer) { static_cast<DataControl *>(data)->selected(Selection::clipboard, offer); },
            .finished = [](void *data, typename P::Device *) {
                qCWarning(lcWaylandClipboard) << "the compositor withdrew the clipboard";
                static_cast<DataControl *>(data)->m_finished = true; },
            .primary_selection = [](void *data, typename P::Device *, typename P::Offer *offer) { static_cast<DataControl *>(data)->selected(Selection::primary, offer); },
        };
        P::listen(m_device, &listener, this);
        m_connection->flush();
    }

    ~DataControl() override
    {
        for (Owned &owned : m_owned) {
            if (owned.source)
                P::destroy(owned.source);
        }
        for (auto it = m_offers.begin(); it != m_offers.end(); ++it)
            P::destroy(it.key());
        P::destroy(m_device);
        P::destroy(m_manager);
        m_connection->flush();
    }

    QCoro::Task<ClipboardFormats> read(Selection selection) override
    {
        ClipboardFormats formats;
        const QPointer<DataControl> self(this);
        // Every selection change sent before now has arrived once the compositor answers.
        const std::shared_ptr<WaylandConnection> connection = m_connection;
        const bool synced = co_await connection->sync();
        if (!synced || !self)
            co_return formats;
        typename P::Offer *const offer = current(selection);
        const QStringList types = offer ? m_offers.value(offer) : QStringList();
        for (const QString &type : types) {
            int fds[2];
            if (pipe2(fds, O_CLOEXEC) != 0)
                break;
            P::receive(offer, type.toUtf8().constData(), fds[1]);
            ::close(fds[1]);
            connection->flush();
            const std::optional<QByteArray> bytes = co_await receiveAll(fds[0], readLimit, readMaxBytes);
            if (!self || current(selection) != offer) {
                qCInfo(lcWaylandClipboard) << "the selection changed while it was read";
                break;
            }
            if (bytes)
                formats.append({type, *bytes});
            else
                qCWarning(lcWaylandClipboard) << "the selection's owner did not send" << type;
        }
        co_return formats;
    }

    bool write(Selection selection, const ClipboardFormats &formats, std::optional<QString> markedText) override
    {
        if (selection == Selection::primary && !hasPrimarySelection())
            return false;
        Owned &owned = m_owned[index(selection)];
        if (owned.source)
            P::destroy(owned.source);
        owned = Owned{};
        typename P::Source *source = nullptr;
        if (!formats.isEmpty()) {
            source = P::source(m_manager);
            static const typename P::SourceListener listener = {
                .send = &DataControl::sendRequested,
                .cancelled = &DataControl::cancelled,
            };
            P::listen(source, &listener, this);
            for (const auto &[type, bytes] : formats)
                P::offer(source, type.toUtf8().constData());
            owned = Owned{source, formats, std::move(markedText)};
        }
        if (selection == Selection::primary)
            P::selectPrimary(m_device, source);
        else
            P::select(m_device, source);
        return !m_finished && m_connection->flush();
    }

    bool holdsText(Selection selection, const QString &text) const override
    {
        const Owned &owned = m_owned[index(selection)];
        return owned.source && owned.markedText == text;
    }

private:
    struct Owned {
        typename P::Source *source = nullptr;
        ClipboardFormats formats;
        std::optional<QString> markedText;
    };

    static int index(Selection selection) { return selection == Selection::primary ? 1 : 0; }

    bool hasPrimarySelection() const override
    {
        return wl_proxy_get_version(reinterpret_cast<wl_proxy *>(m_device)) >= 2 || P::version == 1;
    }

    typename P::Offer *current(Selection selection) const { return m_current[index(selection)]; }

    static void offerIntroduced(void *data, typename P::Device *, typename P::Offer *offer)
    {
        static const typename P::OfferListener listener = {
            .offer = [](void *data, typename P::Offer *offer, const char *type) {
                auto *self = static_cast<DataControl *>(data);
                self->m_offers[offer].append(QString::fromUtf8(type));
            },
        };
        auto *self = static_cast<DataControl *>(data);
        self->m_offers.insert(offer, {});
        P::listen(offer, &listener, self);
    }

    void selected(Selection selection, typename P::Offer *offer)
    {
        typename P::Offer *&slot = m_current[index(selection)];
        typename P::Offer *previous = slot;
        slot = offer;
        // An offer lives until both selections have moved past it.
        if (previous && previous != offer && previous != m_current[0] && previous != m_current[1]) {
            m_offers.remove(previous);
            P::destroy(previous);
        }
    }

    static void sendRequested(void *data, typename P::Source *source, const char *type, int32_t fd)
    {
        auto *self = static_cast<DataControl *>(data);
        for (const Owned &owned : self->m_owned) {
            if (owned.source != source)
                continue;
            for (const auto &[offered, bytes] : owned.formats) {
                if (offered == QLatin1String(type)) {
                    PipeSender::start(fd, bytes, self);
                    return;
                }
            }
        }
        ::close(fd);
    }

    static void cancelled(void *data, typename P::Source *source)
    {
        auto *self = static_cast<DataControl *>(data);
        for (Owned &owned : self->m_owned) {
            if (owned.source == source)
                owned = Owned{};
        }
        P::destroy(source);
    }

    std::shared_ptr<WaylandConnection> m_connection;
    typename P::Manager *m_manager;
    typename P::Device *m_device;
    QHash<typename P::Offer *, QStringList> m_offers;
    typename P::Offer *m_current[2] = {nullptr, nullptr};
    Owned m_owned[2];
    bool m_finished = false;
};

template <class P>
std::unique_ptr<WaylandClipboard::Protocol> dataControl(const std::shared_ptr<WaylandConnection> &connection)
{
    auto *manager = static_cast<typename P::Manager *>(connection->bind(P::manager(), P::version));
    if (!manager)
        return nullptr;
    return std::make_unique<DataControl<P>>(connection, manager);
}

} // namespace

std::shared_ptr<WaylandClipboard> WaylandClipboard::create(const std::shared_ptr<WaylandConnection> &connection)
{
    if (!connection || !connection->seat())
        return nullptr;
    std::unique_ptr<Protocol> protocol = dataControl<ExtDataControl>(connection);
    if (!protocol)
        protocol = dataControl<WlrDataControl>(connection);
    if (!protocol)
        return nullptr;
    // A reader that closes its end early must not end Quorla while a selection is served.
    std::signal(SIGPIPE, SIG_IGN);
    return std::shared_ptr<WaylandClipboard>(new WaylandClipboard(std::move(protocol)));
}

WaylandClipboard::WaylandClipboard(std::unique_ptr<Protocol> protocol)
    : m_protocol(std::move(protocol))
{
}

WaylandClipboard::~WaylandClipboard() = default;

QCoro::Task<ClipboardFormats> WaylandClipboard::read(Selection selection)
{
    return m_protocol->read(selection);
}

bool WaylandClipboard::writeText(Selection selection, const QString &text, bool keepOutOfHistory)
{
    // The target may still be about to read the selection it saw with the paste keys, and a
    // replaced source can no longer serve it: the same text stays on the source it is on.
    if (m_protocol->holdsText(selection, text))
        return true;
    ClipboardFormats formats;
    for (const QString &type : textTypes)
        formats.append({type, text.toUtf8()});
    if (keepOutOfHistory)
        formats.append({passwordManagerHint, QByteArrayLiteral("secret")});
    return m_protocol->write(selection, formats, keepOutOfHistory ? std::optional(text) : std::nullopt);
}

bool WaylandClipboard::write(Selection selection, const ClipboardFormats &formats)
{
    return m_protocol->write(selection, formats, std::nullopt);
}

bool WaylandClipboard::hasPrimarySelection()
{
    return m_protocol->hasPrimarySelection();
}

bool WaylandClipboard::holdsText(Selection selection, const QString &text)
{
    return m_protocol->holdsText(selection, text);
}
