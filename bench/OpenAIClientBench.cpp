// The speech client's own overhead per request: request built, sent over loopback to
// a fake server that answers at once, reply read and parsed. The first request on a
// fresh network manager opens a connection; the following ones reuse it (keep-alive).
//
//   bench_openai_client [runs]     (default 300 following requests, 30 first requests)
//   BENCH_AUDIO_KB=12 bench_openai_client   (another recording size)
//
// Wall time includes any wait in the kernel; CPU time is the work actually done.

#include "FakeOpenAIServer.h"
#include "TaskResult.h"

#include "services/OpenAIClient.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

namespace {

using Request = std::function<QCoro::Task<QString>(OpenAIClient &)>;

struct Sample {
    double wallMs;
    double cpuMs; // every thread of the process: our side, Qt's network thread and the fake server
};

double processCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

Sample timedMs(OpenAIClient &client, const Request &request)
{
    QElapsedTimer timer;
    const double cpuBefore = processCpuMs();
    timer.start();
    const auto result = waitForResult(request(client));
    const Sample sample{double(timer.nsecsElapsed()) / 1e6, processCpuMs() - cpuBefore};
    if (!result.value) {
        std::fprintf(stderr, "request failed: %s\n", qPrintable(result.errorText()));
        std::exit(1);
    }
    return sample;
}

void report(const char *name, const std::vector<Sample> &samples)
{
    std::vector<double> wall;
    std::vector<double> cpu;
    for (const Sample &sample : samples) {
        wall.push_back(sample.wallMs);
        cpu.push_back(sample.cpuMs);
    }
    std::sort(wall.begin(), wall.end());
    std::sort(cpu.begin(), cpu.end());
    const auto at = [](const std::vector<double> &sorted, double q) {
        return sorted[size_t(q * double(sorted.size() - 1))];
    };
    std::printf("%-32s n=%4zu  wall median %7.3f ms  p90 %7.3f ms  min %7.3f ms | cpu median %6.3f ms\n", name,
                wall.size(), at(wall, 0.5), at(wall, 0.9), wall.front(), at(cpu, 0.5));
}

void measure(const char *name, const QUrl &base, const Request &request, int firstRuns, int followingRuns,
             FakeOpenAIServer &server)
{
    std::vector<Sample> first;
    for (int i = 0; i < firstRuns; ++i) {
        QNetworkAccessManager network;
        OpenAIClient client(&network, base);
        first.push_back(timedMs(client, request));
    }
    QNetworkAccessManager network;
    OpenAIClient client(&network, base);
    const int connectionsBefore = server.connectionCount();
    timedMs(client, request);
    std::vector<Sample> following;
    for (int i = 0; i < followingRuns; ++i)
        following.push_back(timedMs(client, request));
    report((QByteArray(name) + ", first").constData(), first);
    report((QByteArray(name) + ", following").constData(), following);
    std::printf("%-32s %d connection(s) for %d requests\n", "", server.connectionCount() - connectionsBefore,
                followingRuns + 1);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int followingRuns = argc > 1 ? std::max(10, std::atoi(argv[1])) : 300;
    const int firstRuns = std::max(10, followingRuns / 10);

    FakeOpenAIServer server;
    server.setReply("/v1/audio/transcriptions",
                    FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody(QStringLiteral(
                                                    "This is about ten seconds of dictated speech, give or take a "
                                                    "few words, sent to the transcription endpoint."))));
    const int audioKB = qEnvironmentVariableIntValue("BENCH_AUDIO_KB") > 0 ? qEnvironmentVariableIntValue("BENCH_AUDIO_KB") : 41;
    QTemporaryDir directory;
    // A 10-second recording is about 41 kB of AAC.
    const QString recording = directory.filePath(QStringLiteral("recording.m4a"));
    {
        QFile file(recording);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        QByteArray audio(audioKB * 1024, '\0');
        for (qsizetype i = 0; i < audio.size(); ++i)
            audio[i] = char((i * 131) & 0xff);
        file.write(audio);
    }

    const QString key = QStringLiteral("sk-bench");
    const QByteArray transcriptionName = "transcription (" + QByteArray::number(audioKB) + " kB)";
    measure(
        transcriptionName.constData(), server.baseURL(),
        [&](OpenAIClient &client) {
            return client.transcribeAudio(recording, key, TranscriptionMode::fast, QStringLiteral("en"),
                                          QStringLiteral("You are transcribing spoken audio."));
        },
        firstRuns, followingRuns, server);
    measure(
        "chat (polish)", server.baseURL(),
        [&](OpenAIClient &client) {
            return client.polishTranscript(QStringLiteral("um so this is the the transcript"), key,
                                           QStringLiteral("- Acme Corp"), QStringLiteral("Be brief."));
        },
        firstRuns, followingRuns, server);
    return 0;
}
