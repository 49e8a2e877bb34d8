#include "Doctor.h"

#include "AppInfo.h"
#include "models/TriggerKey.h"
#include "platform/AudioCapture.h"
#include "platform/CredentialStore.h"
#include "platform/DesktopProbe.h"
#include "services/ServiceAddress.h"
#include "stores/KeychainStore.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroTimer>
#include <QFileInfo>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QPromise>
#include <cmath>
#include <thread>

namespace {

using Status = DoctorCheck::Status;
using Outcome = CredentialStore::Outcome;

// Below this a second of capture holds nothing at all, not even room noise.
constexpr float silentDecibels = -60.0f;

DoctorCheck ok(QString what)
{
    return {Status::ok, std::move(what), QString()};
}

DoctorCheck warn(QString what, QString fix)
{
    return {Status::warn, std::move(what), std::move(fix)};
}

DoctorCheck fail(QString what, QString fix)
{
    return {Status::fail, std::move(what), std::move(fix)};
}

// Probes talk to servers synchronously: each on a thread of its own, so the event
// loop runs on and the probes overlap. (Started outside co_await expressions: GCC 12
// mishandles temporaries there.)
template <typename Call>
QFuture<std::invoke_result_t<Call>> onWorkerThread(Call call)
{
    using Value = std::invoke_result_t<Call>;
    QPromise<Value> promise;
    QFuture<Value> answer = promise.future();
    promise.start();
    // Detached: a probe stuck past its own limits must not keep the process from ending.
    std::thread([promise = std::move(promise), call = std::move(call)]() mutable {
        promise.addResult(call());
        promise.finish();
    }).detach();
    return answer;
}

QList<DoctorCheck> preferencesChecks(const QString &path)
{
    QList<DoctorCheck> checks;
    const QFileInfo file(path);
    if (!file.exists())
        checks.append(ok(QStringLiteral("No preferences saved yet; the defaults are in use")));
    else if (!file.isReadable())
        checks.append(warn(QStringLiteral("Preferences at %1 can't be read; the defaults are in use").arg(path),
                           QStringLiteral("Make the file readable and writable for you: chmod u+rw \"%1\".").arg(path)));
    else
        checks.append(ok(QStringLiteral("Preferences readable at %1").arg(path)));
    return checks;
}

// Run after the preferences were loaded, which sets an unreadable file aside.
QList<DoctorCheck> setAsidePreferencesChecks(const QString &path)
{
    QList<DoctorCheck> checks;
    const QString aside = path + QStringLiteral(".corrupt");
    if (QFileInfo::exists(aside))
        checks.append(warn(QStringLiteral("Unreadable preferences were set aside as %1; the settings were reset").arg(aside),
                           QStringLiteral("Copy what you need from that file into Settings, then delete it.")));
    return checks;
}

DoctorCheck sessionCheck(const DesktopProbe::Session &session)
{
    switch (session.type) {
    case DesktopProbe::SessionType::x11:
        return ok(QStringLiteral("X11 session on display %1").arg(session.display));
    case DesktopProbe::SessionType::wayland: {
        const SessionBackends::Trigger trigger = chosenBackends(session.offers).trigger;
        const QString what = QStringLiteral("%1 session; trigger: %2")
                                 .arg(describedSession(session.offers), describedTrigger(trigger));
        const QString command = QStringLiteral("Bind \"quorla dictation toggle\" to a key in your desktop's keyboard "
                                               "shortcuts (Settings > Use another key or a command)");
        if (trigger == SessionBackends::Trigger::sway || trigger == SessionBackends::Trigger::globalShortcutsPortal)
            return ok(what);
        if (trigger == SessionBackends::Trigger::xwaylandOnly)
            return warn(what, command + QStringLiteral(", or log in to an X11 session."));
        return warn(what, command + QStringLiteral("."));
    }
    case DesktopProbe::SessionType::none:
        break;
    }
    return fail(QStringLiteral("No graphical session (DISPLAY is not set)"),
                QStringLiteral("Run Quorla inside your desktop session."));
}

// Under Wayland the keys go through whatever the compositor offers for them.
DoctorCheck waylandPasteCheck(SessionBackends::Keys keys)
{
    switch (keys) {
    case SessionBackends::Keys::virtualKeyboard:
        return ok(QStringLiteral("Paste route: Ctrl+V through the Wayland virtual keyboard"));
    case SessionBackends::Keys::kdeFakeInput:
        return ok(QStringLiteral("Paste route: Ctrl+V through KWin's fake input"));
    case SessionBackends::Keys::remoteDesktopPortal:
        return ok(QStringLiteral("Paste route: Ctrl+V through the desktop's remote desktop portal"));
    case SessionBackends::Keys::xwaylandOnly:
        return warn(QStringLiteral("Paste route: Ctrl+V reaches only X11 windows; elsewhere text that can't be typed in is only copied"),
                    QStringLiteral("Turn on Accessibility so text is typed in directly."));
    case SessionBackends::Keys::x11:
    case SessionBackends::Keys::none:
        break;
    }
    return warn(QStringLiteral("No paste route: this Wayland session lets no program press keys; text that can't be typed in is only copied"),
                QStringLiteral("Turn on Accessibility so text is typed in directly, or paste with Ctrl+V yourself."));
}

DoctorCheck triggerCheck(DesktopProbe::TriggerAccess access, const QString &key)
{
    switch (access) {
    case DesktopProbe::TriggerAccess::watchable:
        return ok(QStringLiteral("Trigger %1 watched through X11 XInput2 raw key events").arg(key));
    case DesktopProbe::TriggerAccess::noDisplay:
        return fail(QStringLiteral("Trigger %1: no X11 display to watch it on").arg(key),
                    QStringLiteral("Run Quorla in an X11 session."));
    case DesktopProbe::TriggerAccess::noXInput2:
        return fail(QStringLiteral("Trigger %1: the X server has no XInput2 2.2").arg(key),
                    QStringLiteral("Enable the XInputExtension in the X server."));
    case DesktopProbe::TriggerAccess::noTriggerKey:
        break;
    }
    return fail(QStringLiteral("Trigger %1: this keyboard has no such key that X11 can see").arg(key),
                QStringLiteral("Choose another trigger key in Settings."));
}

DoctorCheck accessibilityCheck(const DesktopProbe::AccessibilityBus &bus)
{
    if (!bus.reachable)
        return warn(QStringLiteral("The accessibility bus (AT-SPI) isn't reachable; text will be pasted, not typed in"),
                    QStringLiteral("Install at-spi2-core, then log in again."));
    if (!bus.enabled)
        return warn(QStringLiteral("Accessibility is switched off; text will be pasted, not typed in"),
                    QStringLiteral("Press Grant Access next to Accessibility in Quorla's Settings, or turn on "
                                   "assistive technologies in your desktop's settings."));
    return ok(QStringLiteral("Accessibility bus reachable and enabled"));
}

DoctorCheck pasteCheck(bool canSynthesizeKeys)
{
    if (canSynthesizeKeys)
        return ok(QStringLiteral("Paste route: Ctrl+V through X11 XTest"));
    return warn(QStringLiteral("No paste route: keys can't be synthesized; text that can't be typed in is only copied"),
                QStringLiteral("Run Quorla in an X11 session whose X server has the XTEST extension."));
}

QList<DoctorCheck> audioServerChecks(const DesktopProbe::AudioServer &server)
{
    if (!server.reachable)
        return {fail(QStringLiteral("No audio server is reachable"),
                     QStringLiteral("Start PipeWire or PulseAudio: systemctl --user start pipewire-pulse (or "
                                    "pulseaudio --start)."))};
    const DoctorCheck serverRow = ok(QStringLiteral("Audio server: %1").arg(server.name));
    if (server.defaultInput.isEmpty())
        return {serverRow, fail(QStringLiteral("The audio server has no default input"),
                                QStringLiteral("Connect a microphone and choose it as the input in your sound "
                                               "settings."))};
    return {serverRow, ok(QStringLiteral("Default input: %1").arg(server.defaultInput))};
}

const QString fixKeyring = QStringLiteral(
    "Start a Secret Service (GNOME Keyring, KWallet or KeePassXC with its Secret Service integration), then "
    "save the key again in Settings.");
const QString unlockKeyring =
    QStringLiteral("Unlock your keyring (log out and in again, or unlock \"Login\" in your keyring app).");

DoctorCheck keyringCheck(const CredentialStore::Result &collection)
{
    switch (collection.outcome) {
    case Outcome::success:
        return ok(QStringLiteral("Secret Service present; its default collection is unlocked"));
    case Outcome::interactionNotAllowed:
        return fail(QStringLiteral("The keyring's default collection is locked"), unlockKeyring);
    case Outcome::itemNotFound:
        return fail(QStringLiteral("The keyring has no default collection to keep the key in"),
                    QStringLiteral("Create a default keyring in your keyring app."));
    case Outcome::serviceUnavailable:
        return fail(QStringLiteral("No Secret Service (keyring) is running"), fixKeyring);
    case Outcome::failure:
        break;
    }
    return fail(QStringLiteral("The Secret Service failed (error %1)").arg(collection.status),
                QStringLiteral("Restart your keyring app, or log out and in again."));
}

// The stored key, when there is one and it can be read.
QCoro::Task<CredentialStore::Result> storedAPIKey(std::shared_ptr<CredentialStore> credentials)
{
    const CredentialStore::Result found =
        co_await credentials->exists(QStringLiteral(QUORLA_APP_ID), KeychainStore::apiKeyAccount());
    if (found.outcome != Outcome::success)
        co_return found;
    co_return co_await credentials->copy(QStringLiteral(QUORLA_APP_ID), KeychainStore::apiKeyAccount());
}

DoctorCheck keyCheck(const CredentialStore::Result &stored)
{
    switch (stored.outcome) {
    case Outcome::success:
        return ok(QStringLiteral("API key stored in the keyring"));
    case Outcome::itemNotFound:
        return fail(QStringLiteral("No API key is stored"),
                    QStringLiteral("Open Quorla's Settings and save your OpenAI API key."));
    case Outcome::interactionNotAllowed:
        return fail(QStringLiteral("The API key can't be read while the keyring is locked"), unlockKeyring);
    case Outcome::serviceUnavailable:
    case Outcome::failure:
        break;
    }
    return fail(QStringLiteral("The API key can't be read without a working keyring"), fixKeyring);
}

} // namespace

Doctor::Doctor(Backends backends, QNetworkAccessManager *network, Options options)
    : m_backends(std::move(backends))
    , m_network(network)
    , m_options(std::move(options))
{
}

QCoro::Task<QList<DoctorCheck>> Doctor::run()
{
    QList<DoctorCheck> checks = preferencesChecks(m_options.preferencesPath);
    const PreferencesStore preferences(m_options.preferencesPath);
    checks.append(setAsidePreferencesChecks(m_options.preferencesPath));
    const TriggerKey key = TriggerKey::normalized(preferences.stringValue(PreferenceKeys::triggerKey));
    const std::optional<QString> preferenceAddress = preferences.stringValue(PreferenceKeys::apiBaseURL);

    const std::shared_ptr<DesktopProbe> desktop = m_backends.desktop;
    const std::shared_ptr<CredentialStore> credentials = m_backends.credentials;
    QFuture<DesktopProbe::Session> session = onWorkerThread([desktop] { return desktop->session(); });
    // One thread for both X11 questions: Xlib keeps its extension records process-wide.
    QFuture<std::pair<DesktopProbe::TriggerAccess, bool>> keys = onWorkerThread([desktop, key] {
        return std::pair(desktop->triggerAccess(key), desktop->canSynthesizeKeys());
    });
    QFuture<DesktopProbe::AccessibilityBus> bus = onWorkerThread([desktop] { return desktop->accessibilityBus(); });
    QFuture<DesktopProbe::AudioServer> audioServer = onWorkerThread([desktop] { return desktop->audioServer(); });
    // The keyring answers on this thread's event loop; both questions start now.
    QCoro::Task<CredentialStore::Result> collection = credentials->defaultCollection();
    QCoro::Task<CredentialStore::Result> stored = storedAPIKey(credentials);

    const DesktopProbe::Session sessionAnswer = co_await session;
    checks.append(sessionCheck(sessionAnswer));
    const bool wayland = sessionAnswer.type == DesktopProbe::SessionType::wayland;
    const SessionBackends chosen = chosenBackends(sessionAnswer.offers);
    const std::pair<DesktopProbe::TriggerAccess, bool> keysAnswer = co_await keys;
    // Under Wayland the X11 hook matters only where it is the trigger.
    if (!wayland || chosen.trigger == SessionBackends::Trigger::xwaylandOnly)
        checks.append(triggerCheck(keysAnswer.first, key.displayName));
    const DesktopProbe::AccessibilityBus busAnswer = co_await bus;
    checks.append(accessibilityCheck(busAnswer));
    checks.append(wayland ? waylandPasteCheck(chosen.keys) : pasteCheck(keysAnswer.second));
    const DesktopProbe::AudioServer server = co_await audioServer;
    checks.append(audioServerChecks(server));
    if (server.reachable && !server.defaultInput.isEmpty()) {
        const DoctorCheck level = co_await microphoneLevel();
        checks.append(level);
    }
    const CredentialStore::Result collectionAnswer = co_await collection;
    checks.append(keyringCheck(collectionAnswer));
    const CredentialStore::Result storedAnswer = co_await stored;
    checks.append(keyCheck(storedAnswer));

    const QString apiKey = QString::fromUtf8(storedAnswer.value).trimmed();
    const QString address = preferenceAddress.value_or(QString());
    const QList<DoctorCheck> service = co_await serviceChecks(apiKey, address);
    checks.append(service);
    co_return checks;
}
QCoro::Task<DoctorCheck> Doctor::microphoneLevel()
{
    const QTemporaryDir folder;
    const QString filePath = folder.filePath(QStringLiteral("doctor.m4a"));
    AudioCapture &audio = *m_backends.audio;
    const DoctorCheck broken = fail(QStringLiteral("Recording from the default input failed"),
                                    QStringLiteral("Check in your sound settings that the microphone works and that "
                                                   "no other program holds it."));
    try {
        audio.start(filePath);
    } catch (...) {
        co_return broken;
    }
    audio.takePeakPower();
    float peak = -160.0f;
    // Sampled as the meter does, so a short sound in the second is not lost.
    for (auto waited = std::chrono::milliseconds(0); waited < m_options.listening;
         waited += std::chrono::milliseconds(100)) {
        co_await QCoro::sleepFor(std::min(std::chrono::milliseconds(100), m_options.listening - waited));
        peak = std::max(peak, audio.takePeakPower());
    }
    peak = std::max(peak, audio.takePeakPower());
    try {
        audio.stop();
    } catch (...) {
        co_return broken;
    }
    const QString level = QString::number(std::lround(peak));
    if (peak < silentDecibels)
        co_return warn(QStringLiteral("The default input was silent for a second (peak %1 dBFS)").arg(level),
                       QStringLiteral("Unmute the microphone and raise its input volume in your sound settings."));
    co_return ok(QStringLiteral("The default input hears sound (peak %1 dBFS over one second)").arg(level));
}

QCoro::Task<QList<DoctorCheck>> Doctor::serviceChecks(QString apiKey, QString preferenceAddress)
{
    const auto environment = ServiceAddress::environmentAPIBaseURL();
    const QUrl base = ServiceAddress::normalizedAPIBaseURL(
        environment ? std::optional(environment->toString()) : std::nullopt, preferenceAddress);
    QString source;
    if (environment && !preferenceAddress.trimmed().isEmpty())
        source = QStringLiteral(" (QUORLA_API_BASE_URL overrides the address in Settings)");
    else if (environment)
        source = QStringLiteral(" (from QUORLA_API_BASE_URL)");
    const QString shown = base.toDisplayString();
    if (ServiceAddress::refusalForAPIKey(base))
        co_return {fail(QStringLiteral("Service %1%2 isn't HTTPS and isn't this computer, so the key would travel "
                                       "unencrypted")
                            .arg(shown, source),
                        QStringLiteral("Use an https:// address, or http:// only on this computer."))};
    QList<DoctorCheck> checks{ok(QStringLiteral("Service %1%2").arg(shown, source))};

    QNetworkRequest request(ServiceAddress::endpointURL(base, QStringLiteral("/v1/models")));
    request.setTransferTimeout(m_options.requestTimeoutMs);
    if (!apiKey.isEmpty())
        request.setRawHeader("Authorization", "Bearer " + apiKey.toUtf8());
    std::unique_ptr<QNetworkReply> reply(m_network->get(request));
    co_await qCoro(reply.get()).waitForFinished();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status == 0)
        checks.append(fail(QStringLiteral("The service can't be reached: %1").arg(reply->errorString()),
                           QStringLiteral("Check the network connection and the service address in Settings.")));
    else if (apiKey.isEmpty())
        checks.append(ok(QStringLiteral("The service answers (no key to check)")));
    else if (status == 200)
        checks.append(ok(QStringLiteral("The service answers and accepts the API key")));
    else if (status == 401)
        checks.append(fail(QStringLiteral("The service refuses the API key (HTTP 401)"),
                           QStringLiteral("Save a valid key in Settings; keys are listed at "
                                          "https://platform.openai.com/api-keys.")));
    else
        checks.append(warn(QStringLiteral("The service answered HTTP %1 to a key check").arg(status),
                           QStringLiteral("Check the service address in Settings, or try again later.")));
    co_return checks;
}

bool Doctor::dictationCanWork(const QList<DoctorCheck> &checks)
{
    return std::none_of(checks.begin(), checks.end(), [](const DoctorCheck &check) {
        return check.status == Status::fail;
    });
}

QString Doctor::statusName(DoctorCheck::Status status)
{
    switch (status) {
    case Status::ok:
        return QStringLiteral("ok");
    case Status::warn:
        return QStringLiteral("warn");
    case Status::fail:
        break;
    }
    return QStringLiteral("fail");
}

QString Doctor::text(const QList<DoctorCheck> &checks)
{
    QString text;
    for (const DoctorCheck &check : checks) {
        text += statusName(check.status).leftJustified(6) + check.what;
        if (!check.fix.isEmpty())
            text += QStringLiteral("  \u2014 ") + check.fix;
        text += u'\n';
    }
    return text;
}

QJsonArray Doctor::json(const QList<DoctorCheck> &checks)
{
    QJsonArray rows;
    for (const DoctorCheck &check : checks)
        rows.append(QJsonObject{{QStringLiteral("status"), statusName(check.status)},
                                {QStringLiteral("what"), check.what},
                                {QStringLiteral("fix"), check.fix}});
    return rows;
}
