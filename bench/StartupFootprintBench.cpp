// Start-up time to the window shown and to the tray icon ready, and resident memory
// with the window open and 10 s after it was closed; how long reopening the window
// takes and what opening and closing it 30 more times leaves behind; then memory after
// one short recording and once the encoder has been idle long enough to be unloaded,
// and how long the next press holds the event loop to load the encoder again. Runs the real
// shell (tray, model over the platform backends, the window) on
// the current desktop; prints one line per figure. Times count from the process's
// start (kernel start time) and from main().
#include "app/AppModel.h"
#include "app/AppServicesFactory.h"
#include "shell/HeapTuning.h"
#include "shell/MainWindowController.h"
#include "shell/TrayIcon.h"
#include "platform/AudioCapture.h"
#include "platform/linux/QtAudioCapture.h"
#include "ResidentMemory.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <algorithm>
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

// A push-to-talk of half a second: trigger down, the hold recognized 80 ms later, stop.
// Prints how long the press and the start held the event loop: opening the input, and
// whatever of loading the encoder was not done by then.
void recordOnce(AudioCapture &capture, const QString &filePath, std::function<void()> done)
{
    QElapsedTimer press;
    press.start();
    capture.prepare();
    std::printf("trigger press held the event loop %.1f ms\n", double(press.nsecsElapsed()) / 1e6);
    QTimer::singleShot(80, [&capture, filePath, done] {
        try {
            QElapsedTimer start;
            start.start();
            capture.start(filePath);
            std::printf("starting the recording held the event loop %.1f ms\n", double(start.nsecsElapsed()) / 1e6);
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

// Shows the window and calls back once it drew its first frame (at once when it
// was already open).
void showWindow(MainWindowController &window, std::function<void()> shown)
{
    const bool building = !window.isOpen();
    window.show();
    if (building && window.window())
        QObject::connect(window.window(), &QQuickWindow::frameSwapped, &window, shown, Qt::SingleShotConnection);
    else
        shown();
}

// Opens the window and closes it again, times over: each open builds the scene anew.
// Collects how long each took from the request to the first frame.
void reopen(MainWindowController &window, int times, QList<double> &openTimes, std::function<void()> done)
{
    if (times == 0) {
        done();
        return;
    }
    auto released = std::make_shared<QMetaObject::Connection>();
    *released = QObject::connect(&window, &MainWindowController::windowReleased, [&window, times, &openTimes, done, released] {
        QObject::disconnect(*released);
        QTimer::singleShot(300, [&window, times, &openTimes, done] { reopen(window, times - 1, openTimes, done); });
    });
    auto opening = std::make_shared<QElapsedTimer>();
    opening->start();
    showWindow(window, [&window, &openTimes, opening] {
        openTimes.append(double(opening->nsecsElapsed()) / 1e6);
        QTimer::singleShot(300, &window, &MainWindowController::close);
    });
}

double median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    // As Quorla itself starts.
    restartWithoutFreedBlockCache(argv);
    const double beforeMain = millisecondsSinceProcessStart();
    // Each figure is visible as soon as it is measured, also when written to a file
    // that a profiler watches.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QElapsedTimer sinceMain;
    sinceMain.start();
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);

    QTemporaryDir config;
    auto preferences = std::make_shared<PreferencesStore>(config.filePath(QStringLiteral("preferences.json")));
    preferences->setBool(PreferenceKeys::showMenuBarIcon, true);
    const PlatformBackends backends = makePlatformBackends(TriggerKey::normalized(preferences->stringValue(PreferenceKeys::triggerKey)));
    QNetworkAccessManager network;
    AppModel model(makeAppServices(backends, preferences, &network));

    MainWindowController window(model);
    TrayIcon tray(model);
    std::printf("tray available: %s\n", QSystemTrayIcon::isSystemTrayAvailable() ? "yes" : "no");
    std::printf("tray icon ready: %.1f ms after main, %.0f ms after process start\n", double(sinceMain.nsecsElapsed()) / 1e6,
                beforeMain + double(sinceMain.nsecsElapsed()) / 1e6);
    model.startAppServices();

    QList<double> openTimes;
    showWindow(window, [&] {
        const double shown = double(sinceMain.nsecsElapsed()) / 1e6;
        std::printf("window shown (first frame): %.1f ms after main, %.0f ms after process start\n", shown,
                    beforeMain + shown);
        QTimer::singleShot(2000, &app, [&] {
            std::printf("resident with the window open: %s\n", residentMemory().constData());
            window.close();
            QTimer::singleShot(10000, &app, [&] {
                std::printf("resident 10 s after closing: %s, window %s\n", residentMemory().constData(),
                            window.isOpen() ? "still built" : "released");
                reopen(window, 30, openTimes, [&] {
                    std::printf("window reopened from the tray, request to first frame: median %.0f ms, worst %.0f ms\n",
                                median(openTimes), *std::max_element(openTimes.cbegin(), openTimes.cend()));
                    QTimer::singleShot(10000, &app, [&] {
                        std::printf("resident 10 s after opening and closing it 30 more times: %s\n",
                                    residentMemory().constData());
                        const QString recording = config.filePath(QStringLiteral("recording.m4a"));
                        recordOnce(*backends.audioCapture, recording, [&, recording] {
                            std::printf("resident after one recording: %s\n", residentMemory().constData());
                            const auto *capture = dynamic_cast<QtAudioCapture *>(backends.audioCapture.get());
                            std::printf("waiting %d s for the encoder to idle out...\n",
                                        QtAudioCapture::defaultEncoderIdleMilliseconds / 1000 + 10);
                            QTimer::singleShot(QtAudioCapture::defaultEncoderIdleMilliseconds + 10000, &app,
                                               [&, capture, recording] {
                                                   std::printf("resident with the encoder idled out: %s, encoder %s\n",
                                                               residentMemory().constData(),
                                                               capture && capture->isEncoderLoaded() ? "still loaded" : "unloaded");
                                                   recordOnce(*backends.audioCapture, recording, [] { QApplication::quit(); });
                                               });
                        });
                    });
                });
            });
        });
    });
    return QApplication::exec();
}
