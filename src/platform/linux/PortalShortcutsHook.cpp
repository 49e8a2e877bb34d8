#include "PortalShortcutsHook.h"

#include "platform/linux/PortalBackends.h"

#include <QDBusMessage>
#include <QLoggingCategory>
#include <QPointer>

Q_LOGGING_CATEGORY(lcPortalShortcuts, "quorla.keyboard.portal")

namespace {

const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
// The session's token names the group the desktop files the shortcuts under (KDE, when
// the app id is empty): fixed, so it is the same group every time.
const QString sessionToken = QStringLiteral("quorla");
const QString defaultTriggerName = QStringLiteral("Ctrl+Alt+D");
const QString defaultToggleName = QStringLiteral("Ctrl+Alt+Space");
// Binding can show the desktop's dialog; the user may take a while.
constexpr std::chrono::minutes dialogLimit{5};
constexpr std::chrono::seconds answerLimit{30};

Portal::Shortcuts wantedShortcuts()
{
    const auto entry = [](const QString &id, const QString &description, const QString &chord) {
        return Portal::Shortcut{id, {{QStringLiteral("description"), description}, {QStringLiteral("preferred_trigger"), chord}}};
    };
    return {entry(PortalShortcutsHook::holdId, QStringLiteral("Dictate while held"), PortalShortcutsHook::holdChord),
            entry(PortalShortcutsHook::toggleId, QStringLiteral("Start or stop dictation"),
                  PortalShortcutsHook::toggleChord)};
}

Portal::Shortcuts shortcutsIn(const QVariant &value)
{
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<Portal::Shortcuts>(value.value<QDBusArgument>());
    return value.value<Portal::Shortcuts>();
}

} // namespace

PortalShortcutsHook::PortalShortcutsHook(std::shared_ptr<KeyboardHook> fallback, QDBusConnection bus, QString service)
    : m_fallback(std::move(fallback))
    , m_bus(std::move(bus))
    , m_service(std::move(service))
    , m_triggerName(defaultTriggerName)
    , m_toggleName(defaultToggleName)
{
    Portal::registerTypes();
}

PortalShortcutsHook::~PortalShortcutsHook()
{
    uninstall();
}

KeyboardHook::InstallOutcome PortalShortcutsHook::install(Events events)
{
    uninstall();
    m_events = std::move(events);
    m_installed = true;
    connectSignals(true);
    openSession(++m_generation);
    return {};
}

void PortalShortcutsHook::uninstall()
{
    ++m_generation;
    if (std::exchange(m_fellBack, false))
        m_fallback->uninstall();
    if (!m_session.isEmpty()) {
        m_bus.disconnect(m_service, m_session, Portal::sessionInterface, QStringLiteral("Closed"), this,
                         SLOT(sessionClosed()));
        m_bus.send(QDBusMessage::createMethodCall(m_service, m_session, Portal::sessionInterface,
                                                  QStringLiteral("Close")));
    }
    connectSignals(false);
    m_session.clear();
    m_installed = m_triggerDown = m_toggleDown = false;
    m_events = {};
}

void PortalShortcutsHook::connectSignals(bool on)
{
    const std::pair<QString, const char *> signalSlots[] = {
        {QStringLiteral("Activated"), SLOT(shortcutChanged(QDBusMessage))},
        {QStringLiteral("Deactivated"), SLOT(shortcutChanged(QDBusMessage))},
        {QStringLiteral("ShortcutsChanged"), SLOT(shortcutsRebound(QDBusMessage))},
    };
    for (const auto &[name, slot] : signalSlots) {
        if (on)
            m_bus.connect(m_service, Portal::objectPath, shortcutsInterface, name, this, slot);
        else
            m_bus.disconnect(m_service, Portal::objectPath, shortcutsInterface, name, this, slot);
    }
}

QCoro::Task<void> PortalShortcutsHook::openSession(quint64 generation)
{
    const QPointer<PortalShortcutsHook> self(this);
    const auto stale = [&] { return !self || m_generation != generation; };
    // KDE 5.27 binds the shortcuts given here, without a dialog. (Built ahead: GCC 12 cannot
    // keep an initializer list's array across a co_await.)
    QVariantMap options;
    options.insert(QStringLiteral("session_handle_token"), sessionToken);
    options.insert(QStringLiteral("shortcuts"), QVariant::fromValue(wantedShortcuts()));
    const Portal::Response created = co_await Portal::request(m_bus, m_service, shortcutsInterface,
                                                              QStringLiteral("CreateSession"), {}, options,
                                                              answerLimit);
    if (stale())
        co_return;
    m_session = Portal::pathText(created.results.value(QStringLiteral("session_handle")));
    if (!created.granted() || m_session.isEmpty()) {
        qCWarning(lcPortalShortcuts) << "the desktop refused a shortcuts session:" << created.code
                                     << created.results.value(QStringLiteral("error")).toString();
        fallBack();
        co_return;
    }
    m_bus.connect(m_service, m_session, Portal::sessionInterface, QStringLiteral("Closed"), this,
                  SLOT(sessionClosed()));

    QVariantList session;
    session.append(QVariant::fromValue(QDBusObjectPath(m_session)));
    const Portal::Response listed = co_await Portal::request(m_bus, m_service, shortcutsInterface,
                                                             QStringLiteral("ListShortcuts"), session, {},
                                                             answerLimit);
    if (stale())
        co_return;
    const QVariant bound = listed.results.value(QStringLiteral("shortcuts"));
    if (!shortcutsIn(bound).isEmpty()) {
        noteDescriptions(bound);
        co_return;
    }
    // Nothing bound yet: the desktop asks the user, in its own dialog.
    QVariantList bindArguments = session;
    bindArguments.append(QVariant::fromValue(wantedShortcuts()));
    bindArguments.append(QString()); // no parent window
    const Portal::Response chosen = co_await Portal::request(m_bus, m_service, shortcutsInterface,
                                                             QStringLiteral("BindShortcuts"), bindArguments, {},
                                                             dialogLimit);
    if (stale())
        co_return;
    if (!chosen.granted())
        qCWarning(lcPortalShortcuts) << "the shortcuts were not bound:" << chosen.code;
    noteDescriptions(chosen.results.value(QStringLiteral("shortcuts")));
}

void PortalShortcutsHook::fallBack()
{
    const Events events = m_events;
    uninstall();
    if (!m_fallback)
        return;
    m_fellBack = true;
    try {
        const InstallOutcome outcome = m_fallback->install(events);
        if (events.routeChanged)
            events.routeChanged(nullptr, outcome.notice);
    } catch (...) {
        if (events.routeChanged)
            events.routeChanged(std::current_exception(), std::nullopt);
    }
}

bool PortalShortcutsHook::isInstalled() const
{
    return m_fellBack ? m_fallback->isInstalled() : m_installed;
}

void PortalShortcutsHook::setSpaceCaptureWanted(bool wanted)
{
    if (m_fellBack)
        m_fallback->setSpaceCaptureWanted(wanted);
}

QString PortalShortcutsHook::triggerDisplayName() const
{
    return m_fellBack ? m_fallback->triggerDisplayName() : m_triggerName;
}

QString PortalShortcutsHook::toggleDisplayName() const
{
    return m_fellBack ? m_fallback->toggleDisplayName() : m_toggleName;
}

KeyboardHook::InstallOutcome PortalShortcutsHook::setTriggerKey(const TriggerKey &key)
{
    return m_fallback ? m_fallback->setTriggerKey(key) : InstallOutcome{};
}

void PortalShortcutsHook::noteDescriptions(const QVariant &shortcuts)
{
    bool renamed = false;
    for (const Portal::Shortcut &shortcut : shortcutsIn(shortcuts)) {
        const QString description = shortcut.properties.value(QStringLiteral("trigger_description")).toString();
        QString *name = nullptr;
        if (shortcut.id == holdId)
            name = &m_triggerName;
        else if (shortcut.id == toggleId)
            name = &m_toggleName;
        if (name && !description.isEmpty() && *name != description) {
            *name = description;
            renamed = true;
        }
    }
    if (renamed && m_events.namesChanged)
        m_events.namesChanged();
}

void PortalShortcutsHook::shortcutsRebound(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (!m_session.isEmpty() && arguments.value(0).value<QDBusObjectPath>().path() == m_session)
        noteDescriptions(arguments.value(1));
}

void PortalShortcutsHook::shortcutChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).value<QDBusObjectPath>().path() != m_session || m_session.isEmpty())
        return;
    const QString id = arguments.value(1).toString();
    if (message.member() == QLatin1String("Deactivated")) {
        if (id == holdId)
            releaseHeldTrigger();
        else if (id == toggleId)
            m_toggleDown = false;
        return;
    }
    // A held chord repeats Activated: only the first one counts.
    if (id == holdId && !m_triggerDown) {
        m_triggerDown = true;
        if (m_events.triggerChanged)
            m_events.triggerChanged(true);
    } else if (id == toggleId && !m_toggleDown) {
        m_toggleDown = true;
        if (m_events.toggleRequested)
            m_events.toggleRequested();
    }
}

void PortalShortcutsHook::releaseHeldTrigger()
{
    if (!m_triggerDown)
        return;
    m_triggerDown = false;
    if (m_events.triggerChanged)
        m_events.triggerChanged(false);
}

void PortalShortcutsHook::sessionClosed()
{
    qCWarning(lcPortalShortcuts) << "the desktop closed the shortcuts session";
    // Never a stuck recording: a held trigger counts as released.
    releaseHeldTrigger();
    uninstall();
}

std::shared_ptr<KeyboardHook> makePortalShortcutsHook(std::shared_ptr<KeyboardHook> fallback)
{
    return std::make_shared<PortalShortcutsHook>(std::move(fallback));
}
