#include "FakeOpenAIServer.h"
#include "FakeRealtimeServer.h"
#include "TaskResult.h"

#include "models/TranscriptionPrompt.h"
#include "services/DictationPipeline.h"
#include "services/LiveTranscription.h"
#include "services/OpenAIClient.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using Fault = FakeRealtimeServer::Fault;
const QString live = "Hello from the live server.", uploaded = "Hello from the fake server.";

// Two seconds of speech streamed while recording, then the release: the segments'
// texts in order, or the recording uploaded when the stream broke.
TEST(LiveTranscriptionTest, transcribesWhileRecordingAndFallsBackToTheUpload)
{
    const struct {
        const char *name;
        Fault fault;
        QList<FakeRealtimeServer::Pause> pauses;
        std::optional<QString> language, guidance;
        QString result;
        QByteArray configuration; // the transcription part, when all audio came in
        int spokenChunks = 50;    // silence after them
    } cases[] = {
        {"one segment at the release", Fault::none, {}, {}, {}, live, R"({"model":"gpt-4o-mini-transcribe"})"},
        {"a pause splits the dictation", Fault::none, {{24000, " First. "}}, "de", {}, "First. " + live, R"({"language":"de","model":"gpt-4o-mini-transcribe"})"},
        {"the speech ends at the pause", Fault::none, {{47000, "All."}}, {}, {}, "All.", R"({"model":"gpt-4o-mini-transcribe"})"},
        {"silence from the pause on", Fault::none, {{24000, "All."}}, {}, {}, "All.", R"({"model":"gpt-4o-mini-transcribe"})", 25},
        {"closed mid-dictation", Fault::closeMidDictation, {}, {}, {}, uploaded, {}},
        {"error event", Fault::errorEvent, {{24000, "First."}}, {}, {}, uploaded, {}},
        {"no final transcript", Fault::noFinalTranscript, {{24000, "First."}}, "de", "- Acme", uploaded, R"({"language":"de","model":"gpt-4o-mini-transcribe","prompt":"You are transcribing spoken audio.\nApply these dictionary rules directly in the transcript you return.\nThe transcript may include names, email addresses, company names, or product terms.\n- Acme\nReturn only the transcript text."})"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakeRealtimeServer realtime;
        std::tie(realtime.fault, realtime.pauses) = std::tie(c.fault, c.pauses);
        FakeOpenAIServer http;
        QNetworkAccessManager network;
        QTemporaryDir directory;
        QFile(directory.filePath("rec.m4a")).open(QIODevice::WriteOnly);
        const DictationRequest request{directory.filePath("rec.m4a"), "sk", TranscriptionMode::live, {}, {}, false, {}, {}, std::make_shared<LiveTranscription>(std::chrono::milliseconds(300))};
        request.live->open(realtime.baseURL(), "sk");
        request.live->configure({"gpt-4o-mini-transcribe", c.language, transcriptionPrompt(c.guidance)});
        for (int chunk = 0; chunk < 50; ++chunk) // 40 ms each
            request.live->append(std::vector<std::int16_t>(960, chunk < c.spokenChunks ? 1000 : 0));
        // The release, once the service has told where it cut; what comes after is not sent.
        static_cast<void>(QTest::qWaitFor([&] { return realtime.transcribed == c.pauses.size() || c.fault != Fault::none; }));
        for (int turn = 0; turn < 5; ++turn) // the events sent reach the client
            QCoreApplication::processEvents();
        request.live->commit();
        request.live->append(std::vector<std::int16_t>(960, 1000));

        const auto result = waitForResult(DictationPipeline(std::make_shared<OpenAIClient>(&network, http.baseURL())).run(request));
        EXPECT_EQ(result.value.value_or(result.errorText()), c.result);
        EXPECT_EQ(http.requests().size(), c.result == uploaded ? 1 : 0);
        EXPECT_EQ(realtime.requestURL.path() + "?" + realtime.requestURL.query() + " " + realtime.authorization,
                  "/v1/realtime?intent=transcription Bearer sk");
        QJsonObject input = realtime.configuration["audio"].toObject()["input"].toObject();
        const QJsonValue transcription = input.take("transcription");
        EXPECT_EQ(QJsonDocument(input).toJson(QJsonDocument::Compact),
                  R"({"format":{"rate":24000,"type":"audio/pcm"},"turn_detection":{"type":"server_vad"}})");
        if (!c.configuration.isEmpty()) {
            EXPECT_EQ(QJsonDocument(transcription.toObject()).toJson(QJsonDocument::Compact), c.configuration);
            EXPECT_EQ(realtime.receivedSamples, 48000);
        }
    }
}

} // namespace
