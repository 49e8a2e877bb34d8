// Trigger key release to text in the field (the model's whole path, from the fake key
// hook to the fake inserter), Fast (the recording uploaded at the release) against
// Live (streamed while it is spoken), for a 5 s and a 30 s dictation. Both
// fake services answer as the real one would: 300 ms per request plus 0.15 s per
// second of speech not yet transcribed. The speaker pauses after every phrase; the
// service has transcribed each finished phrase while the next was spoken, so at the
// release Live waits for the last phrase only. With pauseMs, the speaker stops, then
// releases the key that much later, longer than the service's 500 ms of silence before it
// cuts a phrase: the last phrase is transcribed during the pause, and the release commits
// no silent tail.
// Counters: the median wait, Quorla's own share of it (the wait less the fake service's
// time for the request at the release), and the bytes sent per second of speech. Fast's upload
// is counted as the real recorder's 32 kbit/s AAC plus the request's own bytes (the
// fake microphone writes a stand-in file).
#include "FakeOpenAIServer.h"
#include "FakeRealtimeServer.h"
#include "ModelFixture.h"

#include "services/LiveTranscription.h"
#include "services/OpenAIClient.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <optional>
#include <vector>

namespace {

constexpr int perRequestMilliseconds = 300;
constexpr double transcriptionSecondsPerSpeechSecond = 0.15;
constexpr double phraseSeconds = 2.5;
constexpr double aacBytesPerSecond = 32000.0 / 8;
constexpr int serverSilenceMilliseconds = 500;

void BM_releaseToText(benchmark::State &state)
{
    const bool live = state.range(0) != 0;
    const int seconds = int(state.range(1));
    const int pauseMilliseconds = int(state.range(2));
    ModelFixture fixture;
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, QStringLiteral("TextEdit"));
    fixture.audio->duration = seconds + pauseMilliseconds / 1000.0;

    FakeOpenAIServer http;
    FakeOpenAIServer::Reply transcription = FakeOpenAIServer::json(200, FakeOpenAIServer::transcriptionBody("Hello."));
    transcription.delayMilliseconds =
        perRequestMilliseconds + int(transcriptionSecondsPerSpeechSecond * fixture.audio->duration * 1000);
    http.setReply("/v1/audio/transcriptions", transcription);
    FakeRealtimeServer realtime;
    realtime.millisecondsPerSegment = perRequestMilliseconds;
    realtime.secondsPerAudioSecond = transcriptionSecondsPerSpeechSecond;
    for (double end = phraseSeconds; end < seconds; end += phraseSeconds)
        realtime.pauses.append({qint64(end * LiveTranscription::sampleRate), QStringLiteral("Phrase.")});
    if (pauseMilliseconds > 0)
        realtime.pauses.append({qint64((seconds + serverSilenceMilliseconds / 1000.0) * LiveTranscription::sampleRate), QStringLiteral("Phrase.")});

    fixture.makeModel();
    AppServices services = fixture.services;
    services.preferences->setString(PreferenceKeys::apiBaseURL, (live ? realtime.baseURL() : http.baseURL()).toString());
    services.openAIClient = std::make_shared<OpenAIClient>(&fixture.network, http.baseURL());
    AppModel model(services);
    model.setApiKeyDraft(QStringLiteral("sk-bench"));
    model.setTranscriptionMode(live ? TranscriptionMode::live : TranscriptionMode::fast);

    model.startAppServices();

    const std::vector<std::int16_t> tenthOfASecond(LiveTranscription::sampleRate / 10, 1000);
    const std::vector<std::int16_t> silentTenth(LiveTranscription::sampleRate / 10, 0);
    double bytes = 0, quorlaMilliseconds = 0;
    for (auto _ : state) {
        // The trigger goes down (the socket opens), the hold is recognized, recording starts.
        fixture.keyboard->trigger(true);
        if (!QTest::qWaitFor([&] { return model.isRecording(); }, 10000))
            state.SkipWithError("the hold did not start a recording");
        if (live) {
            // Once the socket is open each tenth goes out on its own, as it would while speaking.
            fixture.audio->pcmTap.deliver(tenthOfASecond);
            static_cast<void>(QTest::qWaitFor([&] { return realtime.receivedSamples > 0; }, 10000));
            for (int tenth = 1; tenth < seconds * 10; ++tenth)
                fixture.audio->pcmTap.deliver(tenthOfASecond);
            // Speaking took real time: the audio is in, the earlier phrases transcribed.
            const bool spoken = QTest::qWaitFor(
                [&] {
                    return realtime.receivedSamples >= qint64(seconds) * LiveTranscription::sampleRate
                        && realtime.transcribed >= realtime.pauses.size() - (pauseMilliseconds > 0 ? 1 : 0);
                },
                60000);
            if (!spoken)
                state.SkipWithError("the live server did not get the speech");
            if (pauseMilliseconds > 0) {
                // The pause: the service cuts the last phrase, the release comes the rest of the pause later.
                for (int tenth = 0; tenth < pauseMilliseconds / 100; ++tenth)
                    fixture.audio->pcmTap.deliver(silentTenth);
                static_cast<void>(QTest::qWaitFor([&] { return realtime.transcribed + 1 == realtime.segments; }, 10000));
                const auto release = realtime.cutAt + std::chrono::milliseconds(pauseMilliseconds - serverSilenceMilliseconds);
                QEventLoop pause;
                QTimer::singleShot(std::max(std::chrono::duration_cast<std::chrono::milliseconds>(release - std::chrono::steady_clock::now()), {}),
                                   Qt::PreciseTimer, &pause, &QEventLoop::quit);
                pause.exec();
            }
        }
        // Timed to the inserter's call, with the event loop waiting for events: polling
        // (qWaitFor sleeps 10 ms between rounds) would add up to 10 ms to every hop.
        std::optional<std::chrono::steady_clock::time_point> typed;
        QEventLoop loop;
        fixture.inserter->onInsert = [&](const QString &) {
            typed = std::chrono::steady_clock::now();
            loop.quit();
        };
        QTimer::singleShot(60000, &loop, &QEventLoop::quit);
        const auto released = std::chrono::steady_clock::now();
        fixture.keyboard->trigger(false);
        loop.exec();
        if (!typed)
            state.SkipWithError("no text reached the field");
        const std::chrono::duration<double, std::milli> wait = typed.value_or(released) - released;
        state.SetIterationTime(wait.count() / 1000);
        // Quorla's own share: the wait less the fake service's time for the request at the
        // release (after a pause, its time still to go on the last phrase).
        const auto serviceStart = pauseMilliseconds > 0 ? released : realtime.commitReceivedAt;
        quorlaMilliseconds = wait.count()
                           - (live ? std::chrono::duration<double, std::milli>(realtime.transcriptSentAt - serviceStart).count()
                                   : transcription.delayMilliseconds);
        static_cast<void>(QTest::qWaitFor([&] { return !model.isBusy(); }, 10000));
        bytes = live ? double(realtime.receivedBytes)
                     : double(http.requests().last().body.size() - QByteArray("fake m4a").size())
                           + aacBytesPerSecond * fixture.audio->duration;
    }
    state.counters["bytesPerSpeechSecond"] = bytes / seconds;
    state.counters["quorlaMs"] = quorlaMilliseconds;
}
BENCHMARK(BM_releaseToText)
    ->ArgNames({"live", "seconds", "pauseMs"})
    ->ArgsProduct({{0, 1}, {5, 30}, {0, 600}})
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);

} // namespace
