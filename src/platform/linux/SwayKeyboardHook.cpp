#include "SwayKeyboardHook.h"

#include "SwayIpcConnection.h"
#include "models/QuorlaError.h"
#include "support/PlatformWords.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>
#include <chrono>

Q_LOGGING_CATEGORY(lcSwayHook, "quorla.sway.hook")

namespace {

const QString triggerDownCommand = QStringLiteral("nop quorla-trigger-down");
const QString triggerUpCommand = QStringLiteral("nop quorla-trigger-up");
const QString spaceDownCommand = QStringLiteral("nop quorla-space-down");
const QString spaceUpCommand = QStringLiteral("nop quorla-space-up");
// What every binding of Quorla's runs, and nothing else does.
const QString ownCommandPrefix = QStringLiteral(" nop quorla-");
const QString bindVerb = QStringLiteral("bindsym ");
const QString unbindVerb = QStringLiteral("unbindsym ");
// After a Space met the held trigger the gesture is a toggle, which the trigger's release
// does not change: ending the trigger early is harmless, leaving it held is not.
constexpr auto lostReleaseLimit = std::chrono::seconds(2);

// Keysyms of each trigger; Right Alt is AltGr on many layouts.
QStringList keysymsFor(const QString &triggerId)
{
    static const QHash<QString, QStringList> keysyms{
        {QStringLiteral("rightControl"), {QStringLiteral("Control_R")}},
        {QStringLiteral("rightAlt"), {QStringLiteral("Alt_R"), QStringLiteral("ISO_Level3_Shift")}},
        {QStringLiteral("rightSuper"), {QStringLiteral("Super_R")}},
        {QStringLiteral("menu"), {QStringLiteral("Menu")}},
        {QStringLiteral("scrollLock"), {QStringLiteral("Scroll_Lock")}},
        {QStringLiteral("pause"), {QStringLiteral("Pause")}},
        {QStringLiteral("fn"), {QStringLiteral("XF86Fn")}},
    };
    return keysyms.value(triggerId);
}

// The modifier the held trigger adds to a Space press. sway never matches
// "Control_R+space", but "Control+space" matches either Ctrl.
QString modifierOf(const QString &triggerId)
{
    static const QHash<QString, QString> modifiers{
        {QStringLiteral("rightControl"), QStringLiteral("Control+")},
        {QStringLiteral("rightAlt"), QStringLiteral("Mod1+")},
        {QStringLiteral("rightSuper"), QStringLiteral("Mod4+")},
    };
    return modifiers.value(triggerId);
}

// The sway commands that bind (or unbind) the trigger's press and release, and Space.
QStringList triggerBindings(const TriggerKey &key, bool bind)
{
    const QString verb = bind ? QStringLiteral("bindsym") : QStringLiteral("unbindsym");
    QStringList commands;
    for (const QString &keysym : keysymsFor(key.id)) {
        commands << QStringLiteral("%1 --no-repeat %2 %3").arg(verb, keysym, triggerDownCommand)
                 << QStringLiteral("%1 --release %2 %3").arg(verb, keysym, triggerUpCommand);
    }
    return commands;
}

QStringList spaceBindings(const TriggerKey &key, bool bind)
{
    const QString verb = bind ? QStringLiteral("bindsym") : QStringLiteral("unbindsym");
    QStringList commands;
    // Plain Space too: a running toggle ends with Space alone.
    QStringList combos{QStringLiteral("space")};
    if (!modifierOf(key.id).isEmpty())
        combos << modifierOf(key.id) + QStringLiteral("space");
    for (const QString &combo : combos) {
        commands << QStringLiteral("%1 --no-repeat %2 %3").arg(verb, combo, spaceDownCommand)
                 << QStringLiteral("%1 --release %2 %3").arg(verb, combo, spaceUpCommand);
    }
    return commands;
}

} // namespace

SwayKeyboardHook::SwayKeyboardHook(TriggerKey trigger, QString socketPath)
    : m_trigger(std::move(trigger))
    , m_socketPath(std::move(socketPath))
    // One file per sway: its socket is named after its process.
    , m_recordFile(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/quorla-")
                   + QFileInfo(m_socketPath).fileName() + QStringLiteral(".bindings"))
{
    m_lostReleaseTimer.setSingleShot(true);
    m_lostReleaseTimer.setInterval(lostReleaseLimit);
    QObject::connect(&m_lostReleaseTimer, &QTimer::timeout, [this] {
        if (m_triggerDown && m_releaseMayBeLost)
            deliverTriggerUp();
    });
    QObject::connect(&m_keystrokes, &AtSpiKeystrokeWatch::keyPressed, &m_keystrokes, [this] { otherKeyPressed(); });
}

SwayKeyboardHook::~SwayKeyboardHook()
{
    uninstall();
}

KeyboardHook::InstallOutcome SwayKeyboardHook::install(Events events)
{
    uninstall();
    if (m_socketPath.isEmpty())
        throw QuorlaError::hotkeyRegistrationFailed(PlatformWords::current().swayIpcUnreachable.arg(m_trigger.displayName));
    m_events = std::move(events);
    m_triggerDown = m_releaseMayBeLost = m_ignoreNextRelease = m_spaceBound = false;
    m_connection = new SwayIpcConnection(m_socketPath);
    QObject::connect(m_connection, &SwayIpcConnection::eventArrived, m_connection,
                     [this](SwayIpcConnection::Event type, const QJsonDocument &event) {
                         if (type == SwayIpcConnection::Event::binding)
                             handleBinding(event);
                     });
    QObject::connect(m_connection, &SwayIpcConnection::disconnected, m_connection, [this] {
        qCWarning(lcSwayHook) << "sway IPC closed; the trigger key is not watched any more";
        m_connection->disconnect();
        m_connection->deleteLater();
        m_connection = nullptr;
        m_spaceBound = false;
        if (m_triggerDown)
            deliverTriggerUp();
    });
    m_connection->open();
    m_connection->send(SwayIpcConnection::Message::subscribe, R"(["binding"])");
    m_bound.clear();
    runCommands(leftoverUnbindings() + triggerBindings(m_trigger, true));
    return {};
}

void SwayKeyboardHook::uninstall()
{
    if (!m_connection)
        return;
    QStringList commands = triggerBindings(m_trigger, false);
    if (m_spaceBound)
        commands += spaceBindings(m_trigger, false);
    runCommands(commands);
    m_connection->disconnect();
    m_connection->closeWhenAnswered();
    m_connection = nullptr;
    m_spaceBound = false;
    m_triggerDown = false;
    m_lostReleaseTimer.stop();
    m_keystrokes.stop();
}

void SwayKeyboardHook::setSpaceCaptureWanted(bool wanted)
{
    if (!m_connection || wanted == m_spaceBound)
        return;
    m_spaceBound = wanted;
    runCommands(spaceBindings(m_trigger, wanted));
}

KeyboardHook::InstallOutcome SwayKeyboardHook::setTriggerKey(const TriggerKey &key)
{
    if (m_connection) {
        QStringList commands = triggerBindings(m_trigger, false);
        if (m_spaceBound)
            commands += spaceBindings(m_trigger, false);
        runCommands(commands);
        m_spaceBound = false;
        runCommands(triggerBindings(key, true));
    }
    m_trigger = key;
    m_triggerDown = m_releaseMayBeLost = m_ignoreNextRelease = false;
    m_keystrokes.stop();
    return {};
}

bool SwayKeyboardHook::endStuckTrigger()
{
    if (m_triggerDown)
        deliverTriggerUp();
    m_ignoreNextRelease = false;
    return true;
}

bool SwayKeyboardHook::isSettled() const
{
    return m_connection && m_connection->pendingReplies() == 0;
}

void SwayKeyboardHook::abandon()
{
    if (!m_connection)
        return;
    m_connection->disconnect();
    m_connection->close();
    m_connection->deleteLater();
    m_connection = nullptr;
    m_bound.clear();
}

QStringList SwayKeyboardHook::leftoverUnbindings() const
{
    QFile record(m_recordFile);
    if (!record.open(QIODevice::ReadOnly))
        return {};
    QStringList commands;
    for (const QString &line : QString::fromUtf8(record.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        // Only bindings of Quorla's own, each a single command.
        if (line.startsWith(bindVerb) && line.contains(ownCommandPrefix) && !line.contains(u';'))
            commands << QStringLiteral("un") + line;
    }
    return commands;
}

void SwayKeyboardHook::recordBindings(const QStringList &commands)
{
    for (const QString &command : commands) {
        if (command.startsWith(bindVerb))
            m_bound << command;
        else if (command.startsWith(unbindVerb))
            m_bound.removeAll(command.mid(2));
    }
    if (m_bound.isEmpty()) {
        QFile::remove(m_recordFile);
        return;
    }
    QSaveFile record(m_recordFile);
    if (!record.open(QIODevice::WriteOnly) || record.write(m_bound.join(u'\n').toUtf8()) < 0 || !record.commit())
        qCWarning(lcSwayHook) << "couldn't note the key bindings in" << m_recordFile;
}

void SwayKeyboardHook::runCommands(const QStringList &commands)
{
    if (!m_connection || commands.isEmpty())
        return;
    recordBindings(commands);
    m_connection->send(SwayIpcConnection::Message::runCommand, commands.join(QLatin1Char(';')).toUtf8(),
                       [commands](const QJsonDocument &reply) {
                           const QJsonArray results = reply.array();
                           for (qsizetype i = 0; i < results.size(); ++i) {
                               // Unbinding what is not bound is fine; anything else is worth a line.
                               if (!results.at(i)[u"success"].toBool() && !commands.value(i).startsWith(u"unbindsym"))
                                   qCWarning(lcSwayHook) << "sway refused" << commands.value(i) << ":"
                                                         << results.at(i)[u"error"].toString();
                           }
                       });
}

void SwayKeyboardHook::handleBinding(const QJsonDocument &event)
{
    const QString command = event[u"binding"][u"command"].toString();
    if (command == triggerDownCommand)
        triggerPressed();
    else if (command == triggerUpCommand)
        triggerReleased();
    else if (command == spaceDownCommand) {
        if (m_triggerDown) {
            m_releaseMayBeLost = true;
            m_lostReleaseTimer.start();
        }
        if (m_events.spaceDown)
            m_events.spaceDown(false, m_triggerDown);
    } else if (command == spaceUpCommand) {
        if (m_events.spaceUp)
            m_events.spaceUp();
        // The trigger's own release will not come: end it now rather than leave it held.
        if (m_triggerDown && m_releaseMayBeLost)
            deliverTriggerUp();
    }
}

void SwayKeyboardHook::triggerPressed()
{
    if (m_triggerDown) {
        // Its release was lost: this press only ends the press before it.
        deliverTriggerUp();
        m_ignoreNextRelease = true;
        return;
    }
    m_ignoreNextRelease = false;
    m_triggerDown = true;
    m_keystrokes.start();
    if (m_events.triggerChanged)
        m_events.triggerChanged(true);
}

void SwayKeyboardHook::otherKeyPressed()
{
    // A bound Space never reaches an application, so this is another key: sway will not
    // report the trigger's release, and the gesture is that key's shortcut.
    if (!m_triggerDown)
        return;
    if (m_events.otherKeyDown)
        m_events.otherKeyDown();
    deliverTriggerUp();
}

void SwayKeyboardHook::triggerReleased()
{
    if (std::exchange(m_ignoreNextRelease, false) || !m_triggerDown)
        return;
    deliverTriggerUp();
}

void SwayKeyboardHook::deliverTriggerUp()
{
    m_lostReleaseTimer.stop();
    m_keystrokes.stop();
    m_triggerDown = false;
    m_releaseMayBeLost = false;
    if (m_events.triggerChanged)
        m_events.triggerChanged(false);
}
