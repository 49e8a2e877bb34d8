#include "X11KeyboardHook.h"

#include "models/QuorlaError.h"
#include "platform/linux/X11KeyboardConnection.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcX11Keyboard, "quorla.keyboard.x11")

struct X11KeyboardHook::KeyReport {
    enum class Kind : std::uint8_t { trigger,
                                     spaceDown,
                                     spaceUp };
    Kind kind;
    bool down = false;
    SpaceCaptureTracker::SpacePress press;
};

namespace {

// Keysym names per trigger id; the first one the keymap produces wins (Right Alt is
// AltGr, ISO_Level3_Shift, in layouts that have one).
std::vector<std::string> keysymsFor(const QString &triggerId)
{
    static const QHash<QString, std::vector<std::string>> keysyms{
        {QStringLiteral("rightControl"), {"Control_R"}},
        {QStringLiteral("rightAlt"), {"Alt_R", "ISO_Level3_Shift"}},
        {QStringLiteral("rightSuper"), {"Super_R"}},
        {QStringLiteral("menu"), {"Menu"}},
        {QStringLiteral("scrollLock"), {"Scroll_Lock"}},
        {QStringLiteral("pause"), {"Pause"}},
        {QStringLiteral("fn"), {"XF86Fn"}},
    };
    return keysyms.value(triggerId);
}

// The Linux words for a keyboard that cannot be watched; %1 is the trigger's name.
QString failureMessage(X11KeyboardConnection::OpenResult status)
{
    switch (status) {
    case X11KeyboardConnection::OpenResult::noDisplay:
        return QStringLiteral("Quorla can't reach an X11 display, so %1 and %1 + Space don't work. Run Quorla in "
                              "an X11 session, then reopen Quorla.");
    case X11KeyboardConnection::OpenResult::noXInput2:
        return QStringLiteral("Quorla needs the X11 XInput2 extension (2.2 or later) to use %1 and %1 + Space. "
                              "Enable it in the X server, then reopen Quorla.");
    case X11KeyboardConnection::OpenResult::noXTest:
        return QStringLiteral("Quorla needs the X11 XTest extension to use %1 and %1 + Space and to type into "
                              "other apps. Enable it in the X server, then reopen Quorla.");
    case X11KeyboardConnection::OpenResult::noTriggerKey:
        return QStringLiteral("This keyboard has no %1 key that X11 can see. Choose another trigger key in "
                              "Settings.");
    case X11KeyboardConnection::OpenResult::ok:
        break;
    }
    return QString();
}

const QString waylandNotice = QStringLiteral(
    "In a Wayland session, %1 and %1 + Space only work while an X11 application has focus. Log in to an X11 "
    "session to use them everywhere.");

bool isWaylandSession()
{
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariable("XDG_SESSION_TYPE").compare(QLatin1String("wayland"), Qt::CaseInsensitive) == 0;
}

} // namespace

X11KeyboardHook::X11KeyboardHook(TriggerKey trigger)
    : X11KeyboardHook(std::move(trigger), Options{})
{
}

X11KeyboardHook::X11KeyboardHook(TriggerKey trigger, Options options)
    : m_trigger(std::move(trigger))
    , m_options(options)
{
}

X11KeyboardHook::~X11KeyboardHook()
{
    uninstall();
}

void X11KeyboardHook::install(Events events)
{
    uninstall();
    auto connection = std::make_unique<X11KeyboardConnection>();
    const auto status = connection->open(keysymsFor(m_trigger.id), m_options.acceptSynthesizedKeys);
    if (status != X11KeyboardConnection::OpenResult::ok)
        throw QuorlaError::hotkeyRegistrationFailed(failureMessage(status).arg(m_trigger.displayName));
    m_wakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_wakeFd < 0)
        throw QuorlaError::hotkeyRegistrationFailed(
            failureMessage(X11KeyboardConnection::OpenResult::noDisplay).arg(m_trigger.displayName));

    m_events = std::move(events);
    m_connection = std::move(connection);
    m_receiver = std::make_unique<QObject>();
    m_tracker.reset();
    {
        const std::lock_guard lock(m_grabsMutex);
        m_grabs = m_grabsReported = {};
    }
    m_stopping = false;
    m_thread = std::thread([this] { watchKeys(); });

    // Under Wayland only X11 clients' keys reach the X server; still better than nothing.
    if (isWaylandSession())
        throw QuorlaError::hotkeyRegistrationFailed(waylandNotice.arg(m_trigger.displayName));
}

X11KeyboardConnection::Probe X11KeyboardHook::probe(const TriggerKey &key)
{
    return X11KeyboardConnection::probe(keysymsFor(key.id));
}

void X11KeyboardHook::uninstall()
{
    if (m_thread.joinable()) {
        m_stopping = true;
        const std::uint64_t one = 1;
        while (write(m_wakeFd, &one, sizeof one) < 0 && errno == EINTR) {
        }
        m_thread.join();
    }
    if (m_wakeFd >= 0) {
        close(m_wakeFd);
        m_wakeFd = -1;
    }
    // Deleting the receiver drops the reports still queued for it.
    m_receiver.reset();
    m_connection.reset();
    m_events = {};
}

bool X11KeyboardHook::waitForGrabs(std::chrono::milliseconds timeout, bool spaceGrabbed)
{
    if (!isInstalled())
        return false;
    std::unique_lock lock(m_grabsMutex);
    return m_grabsChanged.wait_for(
        lock, timeout, [&] { return m_grabs.inPlace && (m_grabs.spaceGrabbed || !spaceGrabbed); });
}

// Locks only when the grabs changed, and production has no one waiting on the lock.
void X11KeyboardHook::reportGrabsOnXThread()
{
    const Grabs grabs{m_connection->grabsInPlace(), m_tracker.wantsSpaceGrab()};
    if (grabs == m_grabsReported)
        return;
    m_grabsReported = grabs;
    {
        const std::lock_guard lock(m_grabsMutex);
        m_grabs = grabs;
    }
    m_grabsChanged.notify_all();
}

void X11KeyboardHook::setTriggerKey(const TriggerKey &key)
{
    m_trigger = key;
    if (!isInstalled())
        return;
    Events events = m_events;
    uninstall();
    install(std::move(events));
}

void X11KeyboardHook::watchKeys()
{
    const auto onKey = [this](const X11KeyboardConnection::KeyEvent &event) {
        handleKeyOnXThread(event.keycode, event.key == X11KeyboardConnection::Key::trigger, event.press);
    };
    int refusedReported = 0;
    while (!m_stopping) {
        m_connection->waitForKeys(m_wakeFd, onKey);
        reportGrabsOnXThread();
        const int refused = m_connection->refusedSpaceGrabs();
        if (refused > refusedReported) { // once, not at every trigger press
            qCInfo(lcX11Keyboard) << refused << "modifier combinations of Space belong to other applications";
            refusedReported = refused;
        }
    }
    m_connection->setSpaceGrabbed(false);
}

void X11KeyboardHook::handleKeyOnXThread(std::uint8_t keycode, bool isTrigger, bool press)
{
    std::optional<KeyReport> report;
    if (isTrigger) {
        if (const std::optional<bool> changed = m_tracker.triggerKeyChanged(keycode, press))
            report = KeyReport{KeyReport::Kind::trigger, *changed, {}};
    } else if (press) {
        report = KeyReport{KeyReport::Kind::spaceDown, true, m_tracker.spaceDown()};
    } else {
        m_tracker.spaceUp();
        report = KeyReport{KeyReport::Kind::spaceUp, false, {}};
    }
    // Before the next key is read, so that key already meets the right grab.
    m_connection->setSpaceGrabbed(m_tracker.wantsSpaceGrab());
    // Before the key report: whoever waits for the grabs after it must not find old news.
    reportGrabsOnXThread();
    if (report)
        QMetaObject::invokeMethod(
            m_receiver.get(), [this, report = *report] { deliver(report); }, Qt::QueuedConnection);
}

void X11KeyboardHook::deliver(const KeyReport &report)
{
    switch (report.kind) {
    case KeyReport::Kind::trigger:
        if (m_events.triggerChanged)
            m_events.triggerChanged(report.down);
        break;
    case KeyReport::Kind::spaceDown:
        if (m_events.spaceDown) {
            const bool consumed = m_events.spaceDown(report.press.autoRepeat, report.press.triggerFlag);
            if (consumed != report.press.swallowed)
                qCWarning(lcX11Keyboard) << "Space press" << (report.press.swallowed ? "was taken" : "passed")
                                         << "but the trigger" << (consumed ? "consumed" : "ignored") << "it";
        }
        break;
    case KeyReport::Kind::spaceUp:
        if (m_events.spaceUp)
            m_events.spaceUp();
        break;
    }
}
