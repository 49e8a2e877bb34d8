// Start-up time to the window shown and to the tray icon ready, and resident memory
// with the window open, 10 s after it was closed and after one short recording. Runs the real shell (window,
// tray, model over the platform backends) on the current desktop; prints one line
// per figure. Times count from the process's start (kernel start time) and from main().
#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "app/MainWindowController.h"
#include "app/TrayIcon.h"
#include "platform/AudioCapture.h"
#include "stores/PreferencesStore.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {

// Milliseconds since the kernel started this process (10 ms resolution).
double millisecondsSinceProcessStart()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // Field 22 (starttime) counts after the parenthesised command name.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    const double startTicks = fields.value(19).toDouble();
    const double now = uptime.readAll().split(' ').value(0).toDouble();
    return (now - startTicks / double(sysconf(_SC_CLK_TCK))) * 1000.0;
}

// Resident memory, the part of it that is this process's own data (anonymous: heap,
// stacks, caches) rather than mapped library code, and its fair share of pages it
// shares with other programs.
QByteArray footprint()
{
    QFile rollup(QStringLiteral("/proc/self/smaps_rollup"));
    if (!rollup.open(QIODevice::ReadOnly))
        return "unknown";
    double rss = 0, pss = 0, owned = 0;
    for (const QByteArray &line : rollup.readAll().split('\n')) {
        const double kilobytes = line.mid(line.indexOf(':') + 1).trimmed().split(' ').value(0).toDouble();
        if (line.startsWith("Rss:"))
            rss = kilobytes;
        else if (line.startsWith("Pss:"))
            pss = kilobytes;
        else if (line.startsWith("Anonymous:"))
            owned = kilobytes;
    }
    return QByteArray::number(rss / 1024, 'f', 1) + " MB (own data " + QByteArray::number(owned / 1024, 'f', 1)
        + " MB, proportional " + QByteArray::number(pss / 1024, 'f', 1) + " MB)";
}

// A push-to-talk of half a second: trigger down, the hold recognized 80 ms later, stop.
// The encoder is loaded from then on.
void recordOnce(AudioCapture &capture, const QString &filePath, std::function<void()> done)
{
    capture.prepare();
    QTimer::singleShot(80, [&capture, filePath, done] {
        try {
            capture.start(filePath);
        } catch (const std::exception &error) {
            std::printf("recording failed: %s\n", error.what());
            done();
            return;
        }
        QTimer::singleShot(500, [&capture, filePath, done] {
            try {
                capture.stop();
            } catch (const std::exception &error) {
                std::printf("recording failed: %s\n", error.what());
            }
            capture.release();
            QFile::remove(filePath);
            QTimer::singleShot(2000, done);
        });
    });
}

} // namespace

int main(int argc, char *argv[])
{
    const double beforeMain = millisecondsSinceProcessStart();
    QElapsedTimer sinceMain;
    sinceMain.start();
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);

    QTemporaryDir config;
    auto preferences = std::make_shared<PreferencesStore>(config.filePath(QStringLiteral("preferences.json")));
    preferences->setBool(QStringLiteral("showMenuBarIcon"), true);
    const PlatformBackends backends = makePlatformBackends(*preferences);
    QNetworkAccessManager network;
    AppModel model(makeAppServices(backends, preferences, &network));

    MainWindowController window(model);
    TrayIcon tray(model);
    std::printf("tray available: %s\n", QSystemTrayIcon::isSystemTrayAvailable() ? "yes" : "no");
    std::printf("tray icon ready: %.1f ms after main, %.0f ms after process start\n", double(sinceMain.nsecsElapsed()) / 1e6,
                beforeMain + double(sinceMain.nsecsElapsed()) / 1e6);
    model.startAppServices();
    window.show();

    bool firstFrame = true;
    QObject::connect(window.window(), &QQuickWindow::frameSwapped, &app, [&] {
        if (!firstFrame)
            return;
        firstFrame = false;
        const double shown = double(sinceMain.nsecsElapsed()) / 1e6;
        std::printf("window shown (first frame): %.1f ms after main, %.0f ms after process start\n", shown,
                    beforeMain + shown);
        QTimer::singleShot(2000, &app, [&] {
            std::printf("resident with the window open: %s\n", footprint().constData());
            window.close();
            QTimer::singleShot(10000, &app, [&] {
                std::printf("resident 10 s after closing: %s, window %s\n", footprint().constData(),
                            window.isOpen() ? "still built" : "released");
                recordOnce(*backends.audioCapture, config.filePath(QStringLiteral("recording.m4a")), [] {
                    std::printf("resident after one recording: %s\n", footprint().constData());
                    QApplication::quit();
                });
            });
        });
    });
    return QApplication::exec();
}
