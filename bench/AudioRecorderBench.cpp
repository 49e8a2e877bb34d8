// Recording costs against the desktop's audio server (run inside scripts/desktop-session):
//   (a) trigger down -> first captured sample in the file, with and without the warm-up
//   (b) stopRecording -> file complete on disk
//   (c) CPU time per second of recording
//   (d) bytes per second of speech
// (a) is taken from the file itself (ffprobe's duration: the recorder's leaves out the
// audio from before the start): the last sample arrives at about the moment of the
// stop, so the first one was captured at stop time minus the file's duration. That
// counts the delivery delay at the stop against us, so the figure is an upper bound.
#include "platform/linux/QtAudioCapture.h"
#include "services/AudioRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

namespace {

void spin(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
         + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// The audio in the file, warm-up included.
double fileSeconds(const QString &path)
{
    QProcess probe;
    probe.start(QStringLiteral("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                                            QStringLiteral("format=duration"), QStringLiteral("-of"),
                                            QStringLiteral("csv=p=0"), path});
    probe.waitForFinished();
    return probe.readAllStandardOutput().trimmed().toDouble();
}

struct Summary {
    double median = 0;
    double max = 0;
};

Summary summarize(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.back()};
}

// One push-to-talk: trigger down, the 80 ms hold delay, 0.5 s of recording, stop.
struct Trial {
    double firstSampleMs = 0;
    double stopMs = 0;
    double warmUpMs = 0;
};

Trial pushToTalk(AudioRecorder &recorder, bool warmUp, int recordMs)
{
    QElapsedTimer clock;
    clock.start();
    if (warmUp)
        recorder.warmUp();
    const double warmUpMs = double(clock.nsecsElapsed()) / 1e6;
    spin(80);
    recorder.startRecording();
    spin(recordMs);
    const double stopAt = double(clock.nsecsElapsed()) / 1e6;
    const auto recording = recorder.stopRecording();
    const double stoppedAt = double(clock.nsecsElapsed()) / 1e6;
    const double recorded = fileSeconds(recording.fileURL);
    QFile::remove(recording.fileURL);
    spin(300); // the input closes between dictations
    return {stopAt - recorded * 1000, stoppedAt - stopAt, warmUpMs};
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir directory;
    auto capture = std::make_shared<QtAudioCapture>();
    AudioRecorder recorder(capture, directory.filePath(QStringLiteral("Quorla")));
    if (recorder.permissionState() != PermissionState::authorized) {
        std::fprintf(stderr, "no audio input: run inside scripts/desktop-session\n");
        return 1;
    }
    // Not typical, so not in the figures below: the first connection to the server, and
    // the encoder module loaded while the trigger is down.
    const Trial first = pushToTalk(recorder, true, 200);
    std::printf("(a) the first recording of the process: first sample in file %.1f ms after trigger down; "
                "trigger down holds the event loop %.1f ms\n",
                first.firstSampleMs, first.warmUpMs);

    constexpr int trials = 15;
    for (const bool warmUp : {true, false}) {
        std::vector<double> firstSample, stop, warm;
        for (int i = 0; i < trials; ++i) {
            const Trial trial = pushToTalk(recorder, warmUp, 500);
            firstSample.push_back(trial.firstSampleMs);
            stop.push_back(trial.stopMs);
            warm.push_back(trial.warmUpMs);
        }
        const Summary a = summarize(firstSample), b = summarize(stop);
        std::printf("(a) trigger down -> first sample in file, %s: median %.1f ms, max %.1f ms (%d trials)\n",
                    warmUp ? "warm-up on trigger down" : "input opened at start", a.median, a.max, trials);
        if (warmUp)
            std::printf("    opening the input on trigger down holds the event loop: median %.1f ms, max %.1f ms\n",
                        summarize(warm).median, summarize(warm).max);
        if (warmUp)
            std::printf("(b) stopRecording -> file complete, 0.5 s recordings: median %.2f ms, max %.2f ms\n",
                        b.median, b.max);
    }

    // A long dictation: the index moves to the front of a bigger file at the stop.
    std::vector<double> longStops;
    const double idleCpuStart = cpuSeconds();
    spin(3000);
    const double idleCpuPerSecond = (cpuSeconds() - idleCpuStart) / 3.0;
    const double cpuStart = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    recorder.startRecording();
    spin(20000);
    QElapsedTimer stopClock;
    stopClock.start();
    const auto longRecording = recorder.stopRecording();
    longStops.push_back(double(stopClock.nsecsElapsed()) / 1e6);
    const double cpuPerSecond = (cpuSeconds() - cpuStart) / (double(wall.nsecsElapsed()) / 1e9);
    std::printf("(b) stopRecording -> file complete, 20 s recording: %.2f ms\n", longStops.front());
    std::printf("(c) CPU per second of recording: %.2f %% of a core (idle process: %.2f %%)\n",
                cpuPerSecond * 100, idleCpuPerSecond * 100);
    QFile::remove(longRecording.fileURL);

    // Speech: espeak-ng into the virtual microphone.
    const QString wav = directory.filePath(QStringLiteral("speech.wav"));
    QProcess::execute(QStringLiteral("espeak-ng"),
                      {QStringLiteral("-w"), wav,
                       QStringLiteral("Please send the quarterly report to the whole team before Friday, "
                                      "and remind everyone that the meeting moved to three o'clock.")});
    recorder.startRecording();
    QProcess play;
    play.start(QStringLiteral("paplay"), {QStringLiteral("-d"), QStringLiteral("vsink"), wav});
    while (play.state() != QProcess::NotRunning)
        spin(20);
    const auto speech = recorder.stopRecording();
    const double bytes = double(QFileInfo(speech.fileURL).size());
    std::printf("(d) speech: %.0f bytes for %.2f s = %.2f kB/s (peak %.1f dBFS)\n", bytes, speech.duration,
                bytes / speech.duration / 1000, speech.maxPeakPower);
    QFile::remove(speech.fileURL);
    return 0;
}
