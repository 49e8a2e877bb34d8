#include "PortalKeySynthesizer.h"

#include "platform/linux/PortalBackends.h"

#include <QCoro/QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <xkbcommon/xkbcommon-keysyms.h>

Q_LOGGING_CATEGORY(lcPortalKeys, "quorla.keys.portal")

namespace {

const QString remoteDesktopInterface = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
// Not the shortcuts session's token: both sessions would get the same path.
const QString sessionToken = QStringLiteral("quorla_keyboard");
constexpr uint keyboardDevice = 1;
constexpr uint persistUntilRevoked = 2;
constexpr std::chrono::seconds answerLimit{30};
// GNOME's consent dialog waits for the user; a paste waits with it, the transcript safe on
// the clipboard and in history.
constexpr std::chrono::minutes consentLimit{2};

QString readToken(const QString &file)
{
    QFile in(file);
    return in.open(QIODevice::ReadOnly) ? QString::fromUtf8(in.readAll()).trimmed() : QString();
}

void writeToken(const QString &file, const QString &token)
{
    QDir().mkpath(QFileInfo(file).absolutePath());
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(token.toUtf8()) < 0 || !out.commit())
        qCWarning(lcPortalKeys) << "couldn't keep the remote desktop consent in" << file;
}

} // namespace

PortalKeySynthesizer::PortalKeySynthesizer(QString restoreTokenFile, std::shared_ptr<KeySynthesizer> fallback,
                                           QDBusConnection bus, QString service)
    : m_tokenFile(std::move(restoreTokenFile))
    , m_fallback(std::move(fallback))
    , m_bus(std::move(bus))
    , m_service(std::move(service))
{
}

PortalKeySynthesizer::~PortalKeySynthesizer()
{
    if (!m_session.isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(m_service, m_session, Portal::sessionInterface,
                                                  QStringLiteral("Close")));
    m_fallback.reset();
    finishOpening(false);
}

void PortalKeySynthesizer::prepare(const std::function<void(bool ready)> &ready)
{
    if (!m_session.isEmpty()) {
        m_fellBack = false;
        ready(true);
        return;
    }
    m_waiting.push_back(ready);
    if (!m_opening)
        openSession();
}

void PortalKeySynthesizer::finishOpening(bool ready)
{
    m_opening = false;
    m_fellBack = !ready && m_fallback;
    for (const auto &waiting : std::exchange(m_waiting, {})) {
        if (m_fellBack)
            m_fallback->prepare(waiting);
        else
            waiting(ready);
    }
}

QCoro::Task<void> PortalKeySynthesizer::openSession()
{
    m_opening = true;
    const QPointer<PortalKeySynthesizer> self(this);
    QDBusMessage get = QDBusMessage::createMethodCall(m_service, Portal::objectPath,
                                                      QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("Get"));
    get << remoteDesktopInterface << QStringLiteral("version");
    const QDBusMessage versionReply = co_await m_bus.asyncCall(get);
    if (!self)
        co_return;
    const uint version = versionReply.arguments().value(0).value<QDBusVariant>().variant().toUInt();

    // Built ahead: GCC 12 cannot keep an initializer list's array across a co_await.
    QVariantMap sessionOptions;
    sessionOptions.insert(QStringLiteral("session_handle_token"), sessionToken);
    const Portal::Response created = co_await Portal::request(m_bus, m_service, remoteDesktopInterface,
                                                              QStringLiteral("CreateSession"), {}, sessionOptions,
                                                              answerLimit);
    if (!self)
        co_return;
    const QString session = Portal::pathText(created.results.value(QStringLiteral("session_handle")));
    if (!created.granted() || session.isEmpty()) {
        failOpening(session, QStringLiteral("CreateSession"), created);
        co_return;
    }
    QVariantList sessionArgument;
    sessionArgument.append(QVariant::fromValue(QDBusObjectPath(session)));
    QVariantMap devices;
    devices.insert(QStringLiteral("types"), keyboardDevice);
    if (version >= 2) {
        devices.insert(QStringLiteral("persist_mode"), persistUntilRevoked);
        if (const QString token = readToken(m_tokenFile); !token.isEmpty())
            devices.insert(QStringLiteral("restore_token"), token);
    }
    const Portal::Response selected = co_await Portal::request(
        m_bus, m_service, remoteDesktopInterface, QStringLiteral("SelectDevices"), sessionArgument, devices,
        answerLimit);
    if (!self)
        co_return;
    if (!selected.granted()) {
        failOpening(session, QStringLiteral("SelectDevices"), selected);
        co_return;
    }
    QVariantList startArguments = sessionArgument;
    startArguments.append(QString()); // no parent window
    const Portal::Response started = co_await Portal::request(
        m_bus, m_service, remoteDesktopInterface, QStringLiteral("Start"), startArguments,
        {}, consentLimit);
    if (!self)
        co_return;
    if (!started.granted() || !(started.results.value(QStringLiteral("devices")).toUInt() & keyboardDevice)) {
        failOpening(session, QStringLiteral("Start"), started);
        co_return;
    }
    if (const QString token = started.results.value(QStringLiteral("restore_token")).toString(); !token.isEmpty())
        writeToken(m_tokenFile, token);
    m_session = session;
    m_bus.connect(m_service, m_session, Portal::sessionInterface, QStringLiteral("Closed"), this,
                  SLOT(sessionClosed()));
    finishOpening(true);
}

void PortalKeySynthesizer::failOpening(const QString &session, const QString &step, const Portal::Response &response)
{
    qCWarning(lcPortalKeys) << "no remote desktop keyboard:" << step << "answered" << response.code
                            << response.results.value(QStringLiteral("error")).toString();
    if (!session.isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(m_service, session, Portal::sessionInterface,
                                                  QStringLiteral("Close")));
    finishOpening(false);
}

void PortalKeySynthesizer::sessionClosed()
{
    // The next paste opens a new one.
    qCInfo(lcPortalKeys) << "the desktop closed the remote desktop session";
    m_bus.disconnect(m_service, m_session, Portal::sessionInterface, QStringLiteral("Closed"), this,
                     SLOT(sessionClosed()));
    m_session.clear();
}

bool PortalKeySynthesizer::sendBackspace()
{
    if (m_fellBack)
        return m_fallback->sendBackspace();
    return sendKeys({XKB_KEY_BackSpace});
}

bool PortalKeySynthesizer::sendPasteShortcut(PasteShortcut shortcut)
{
    if (m_fellBack)
        return m_fallback->sendPasteShortcut(shortcut);
    switch (shortcut) {
    case PasteShortcut::controlShiftV:
        return sendKeys({XKB_KEY_Control_L, XKB_KEY_Shift_L, XKB_KEY_v});
    case PasteShortcut::shiftInsert:
        return sendKeys({XKB_KEY_Shift_L, XKB_KEY_Insert});
    case PasteShortcut::controlV:
        break;
    }
    return sendKeys({XKB_KEY_Control_L, XKB_KEY_v});
}

bool PortalKeySynthesizer::sendKeys(std::initializer_list<int> keysyms)
{
    if (m_session.isEmpty())
        return false;
    // Pressed in order, released in reverse.
    for (const int keysym : keysyms)
        m_keys.emplace_back(keysym, 1);
    for (auto keysym = std::rbegin(keysyms); keysym != std::rend(keysyms); ++keysym)
        m_keys.emplace_back(*keysym, 0);
    if (!m_sendingKeys)
        sendQueuedKeys();
    return true;
}

// The portal handles each call on a thread of its own and can pass two keys sent together
// to the desktop in the wrong order (V's release before its press): each key goes once
// the portal has answered the one before.
QCoro::Task<void> PortalKeySynthesizer::sendQueuedKeys()
{
    const QPointer<PortalKeySynthesizer> self(this);
    m_sendingKeys = true;
    while (!m_keys.empty() && !m_session.isEmpty()) {
        const auto [keysym, pressed] = m_keys.front();
        m_keys.pop_front();
        QDBusMessage message = QDBusMessage::createMethodCall(m_service, Portal::objectPath, remoteDesktopInterface,
                                                              QStringLiteral("NotifyKeyboardKeysym"));
        message << QVariant::fromValue(QDBusObjectPath(m_session)) << QVariantMap() << keysym << pressed;
        const QDBusMessage reply = co_await m_bus.asyncCall(message, int(std::chrono::milliseconds(answerLimit).count()));
        if (!self)
            co_return;
        if (reply.type() == QDBusMessage::ErrorMessage)
            qCWarning(lcPortalKeys) << "a key did not go out:" << reply.errorMessage();
    }
    m_keys.clear();
    m_sendingKeys = false;
}

std::shared_ptr<KeySynthesizer> makePortalKeySynthesizer(std::shared_ptr<KeySynthesizer> fallback)
{
    return std::make_shared<PortalKeySynthesizer>(
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/remote-desktop-token"),
        std::move(fallback));
}
