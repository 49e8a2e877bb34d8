// The main thread's longest pause during a dictation start while the accessibility bus
// and the keyring answer slowly: both daemons are stopped (SIGSTOP) as the trigger goes
// down and continued by another thread after a delay. A 1 ms timer on the main thread
// records the longest gap between its ticks. The key is not cached, so the start reads
// it from the keyring. Run it inside scripts/desktop-session, whose daemons it stops.
#include "FakeAudioCapture.h"
#include "FakeInputSourceProvider.h"
#include "FakeKeySynthesizer.h"
#include "FakeKeyboardHook.h"
#include "FakeWorkspace.h"
#include "TaskResult.h"

#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "platform/PlatformBackends.h"
#include "platform/QtClipboard.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/SecretServiceCredentialStore.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTimer>
#include <QUuid>
#include <QCoro/QCoroTimer>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace {

const QString service = QStringLiteral("app.quorla.stall-bench-") + QUuid::createUuid().toString(QUuid::Id128);

uint ownerPid(const QString &name)
{
    return QDBusConnection::sessionBus().interface()->servicePid(name).value();
}

// The longest gap between ticks of a 1 ms timer while it runs.
class StallMeter
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_longest = std::max(m_longest, m_sinceTick.restart());
        });
        m_sinceTick.start();
        m_timer.start();
    }
    [[nodiscard]] qint64 longestMs() const { return std::max(m_longest, m_sinceTick.elapsed()); }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_longest = 0;
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const uint keyring = ownerPid(QStringLiteral("org.freedesktop.secrets"));
    const uint accessibilityBus = ownerPid(QStringLiteral("org.a11y.Bus"));
    if (!keyring || !accessibilityBus) {
        std::fprintf(stderr, "needs the keyring and the accessibility bus: run inside scripts/desktop-session\n");
        return 1;
    }

    QTemporaryDir directory;
    QNetworkAccessManager network;
    auto credentials = std::make_shared<SecretServiceCredentialStore>();
    auto workspace = std::make_shared<FakeWorkspace>();
    workspace->frontmost = std::make_shared<FakeApplication>(4242, QStringLiteral("Editor"));
    const PlatformBackends backends{std::make_shared<FakeKeyboardHook>(), workspace,
                                    std::make_shared<AtSpiAccessibility>(), std::make_shared<FakeAudioCapture>(),
                                    std::make_shared<FakeInputSourceProvider>(), credentials,
                                    std::make_shared<FakeKeySynthesizer>(), std::make_shared<QtClipboard>()};
    const PlatformWords &words = PlatformWords::linuxDesktop();
    AppServices services = makeAppServices(backends, std::make_shared<PreferencesStore>(directory.filePath("p.json")),
                                           &network, &words, directory.filePath("recordings"));
    services.keychainStore = std::make_shared<KeychainStore>(credentials, service, words);
    waitForDone([](std::shared_ptr<KeychainStore> keychain) -> QCoro::Task<> {
        co_await keychain->saveString(QStringLiteral("sk-bench"), KeychainStore::apiKeyAccount());
    }(services.keychainStore));

    std::printf("%-22s %-18s %s\n", "daemons stopped for", "longest stall", "start took");
    for (const int delayMs : {0, 300, 1500}) {
        AppModel model(services); // a fresh model: the key is read from the keyring
        waitForDone([]() -> QCoro::Task<> { co_await QCoro::sleepFor(std::chrono::milliseconds(200)); }());
        kill(pid_t(keyring), SIGSTOP);
        kill(pid_t(accessibilityBus), SIGSTOP);
        std::thread resume([=] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
            kill(pid_t(keyring), SIGCONT);
            kill(pid_t(accessibilityBus), SIGCONT);
        });
        QElapsedTimer took;
        took.start();
        StallMeter meter;
        waitForDone(model.globalPressToTalkBegan());
        const qint64 stall = meter.longestMs();
        const qint64 elapsed = took.elapsed();
        resume.join();
        std::printf("%-22s %-18s %lld ms%s\n", qPrintable(QStringLiteral("%1 ms").arg(delayMs)),
                    qPrintable(QStringLiteral("%1 ms").arg(stall)), static_cast<long long>(elapsed),
                    model.isRecording() ? "" : "  (did not start)");
        model.cancelRecording();
    }
    waitForDone([](std::shared_ptr<KeychainStore> keychain) -> QCoro::Task<> {
        co_await keychain->deleteItem(KeychainStore::apiKeyAccount());
    }(services.keychainStore));
    return 0;
}
