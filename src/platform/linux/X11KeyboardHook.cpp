#include "X11KeyboardHook.h"

#include "models/QuorlaError.h"
#include "platform/linux/X11KeyboardConnection.h"
#include "platform/linux/X11SynthesizedKeys.h"
#include "support/PlatformWords.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcX11Keyboard, "quorla.keyboard.x11")

struct X11KeyboardHook::KeyReport {
    enum class Kind : std::uint8_t { trigger,
                                     spaceDown,
                                     spaceUp,
                                     shortcut };
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

// The platform's sentence for what cannot be watched, with the precise cause after it.
QString failureMessage(const TriggerKey &trigger, X11KeyboardConnection::OpenResult status)
{
    const PlatformWords &words = PlatformWords::current();
    QString sentence = words.monitorOutsideWindowFailure;
    QString cause;
    switch (status) {
    case X11KeyboardConnection::OpenResult::noDisplay:
        cause = QStringLiteral("No X11 display can be reached.");
        break;
    case X11KeyboardConnection::OpenResult::noXInput2:
        cause = QStringLiteral("The X server has no XInput2 2.2.");
        break;
    case X11KeyboardConnection::OpenResult::noTriggerKey:
        cause = QStringLiteral("This keyboard has no %1 key that X11 can see: choose another trigger key in Settings.");
        break;
    case X11KeyboardConnection::OpenResult::noGrabConnection:
        sentence = words.monitorCaptureSpaceFailure;
        cause = QStringLiteral("The X11 display refused the connection that takes Space.");
        break;
    case X11KeyboardConnection::OpenResult::ok:
        break;
    }
    return (sentence + u' ' + cause).arg(trigger.displayName);
}

QString waylandNotice(const TriggerKey &trigger)
{
    return (PlatformWords::current().monitorOutsideWindowFailure
            + QStringLiteral(" In a Wayland session, %1 and %1 + Space only work while an X11 application has focus."))
        .arg(trigger.displayName);
}

bool isWaylandSession()
{
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariable("XDG_SESSION_TYPE").compare(QLatin1String("wayland"), Qt::CaseInsensitive) == 0;
}

} // namespace

X11KeyboardHook::X11KeyboardHook(TriggerKey trigger)
    : m_trigger(std::move(trigger))
{
}

X11KeyboardHook::~X11KeyboardHook()
{
    uninstall();
}

KeyboardHook::InstallOutcome X11KeyboardHook::install(Events events)
{
    uninstall();
    auto connection = std::make_unique<X11KeyboardConnection>();
    const auto status = connection->open(keysymsFor(m_trigger.id));
    if (status != X11KeyboardConnection::OpenResult::ok)
        throw QuorlaError::hotkeyRegistrationFailed(failureMessage(m_trigger, status));
    m_wakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_wakeFd < 0)
        throw QuorlaError::hotkeyRegistrationFailed(
            failureMessage(m_trigger, X11KeyboardConnection::OpenResult::noGrabConnection));

    m_events = std::move(events);
    m_connection = std::move(connection);
    m_receiver = std::make_unique<QObject>();
    m_tracker.reset();
    X11SynthesizedKeys::forget();
    {
        const std::lock_guard lock(m_grabsMutex);
        m_grabsInPlace = m_grabsInPlaceReported = false;
    }
    m_stopping = false;
    m_thread = std::thread([this] { watchKeys(); });

    // Under Wayland only X11 clients' keys reach the X server; still better than nothing.
    if (isWaylandSession())
        return {waylandNotice(m_trigger)};
    return {};
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

bool X11KeyboardHook::waitForGrabs(std::chrono::milliseconds timeout)
{
    if (!isInstalled())
        return false;
    std::unique_lock lock(m_grabsMutex);
    return m_grabsChanged.wait_for(lock, timeout, [&] { return m_grabsInPlace; });
}

// Locks only when the grabs changed, and production has no one waiting on the lock.
void X11KeyboardHook::reportGrabsOnXThread()
{
    const bool inPlace = m_connection->grabsInPlace();
    if (inPlace == m_grabsInPlaceReported)
        return;
    m_grabsInPlaceReported = inPlace;
    {
        const std::lock_guard lock(m_grabsMutex);
        m_grabsInPlace = inPlace;
    }
    m_grabsChanged.notify_all();
}

KeyboardHook::InstallOutcome X11KeyboardHook::setTriggerKey(const TriggerKey &key)
{
    m_trigger = key;
    if (!isInstalled())
        return {};
    Events events = m_events;
    uninstall();
    return install(std::move(events));
}

void X11KeyboardHook::watchKeys()
{
    const auto onKey = [this](const X11KeyboardConnection::KeyEvent &event) { handleKeyOnXThread(event); };
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

void X11KeyboardHook::handleKeyOnXThread(const X11KeyboardConnection::KeyEvent &key)
{
    std::optional<KeyReport> report;
    switch (key.key) {
    case X11KeyboardConnection::Key::trigger:
        if (const std::optional<bool> changed = m_tracker.triggerKeyChanged(key.keycode, key.press))
            report = KeyReport{KeyReport::Kind::trigger, *changed, {}};
        break;
    case X11KeyboardConnection::Key::space:
        if (key.press) {
            report = KeyReport{KeyReport::Kind::spaceDown, true, m_tracker.spaceDown()};
        } else {
            m_tracker.spaceUp();
            report = KeyReport{KeyReport::Kind::spaceUp, false, {}};
        }
        break;
    case X11KeyboardConnection::Key::other:
        // Every key passes here; only the one that makes a hold a shortcut is told.
        if (m_tracker.otherKeyDown())
            report = KeyReport{KeyReport::Kind::shortcut, true, {}};
        break;
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
    case KeyReport::Kind::shortcut:
        if (m_events.otherKeyDown)
            m_events.otherKeyDown();
        break;
    }
}
