#include "FakeOpenAIServer.h"
#include "FakeRealtimeServer.h"
#include "TaskResult.h"

#include "models/TranscriptionPrompt.h"
#include "services/DictationPipeline.h"
#include "services/LiveTranscription.h"
#include "services/OpenAIClient.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Fault = FakeRealtimeServer::Fault;
const InputLanguageHint german{"de", "German"};

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Two seconds of speech streamed while recording, then the release: the segments'
// texts in order, or the recording uploaded when the stream broke.
TEST(LiveTranscriptionTest, transcribesWhileRecordingAndFallsBackToTheUpload)
{
    const struct {
        const char *name;
        Fault fault;
        QList<FakeRealtimeServer::Pause> pauses;
        std::optional<InputLanguageHint> language;
        std::optional<QString> guidance;
        QString result;
        bool uploaded;
        QByteArray transcription; // the session's transcription settings, when all audio came in
    } cases[] = {
        {"one segment at the release", Fault::none, {}, {}, {}, "Hello from the live server.", false,
         R"({"model":"gpt-4o-mini-transcribe"})"},
        {"a pause splits the dictation", Fault::none, {{24000, " First part. "}}, german, {}, "First part. Hello from the live server.", false,
         R"({"language":"de","model":"gpt-4o-mini-transcribe"})"},
        {"the pause ends the speech", Fault::none, {{47000, "All of it."}}, {}, {}, "All of it.", false,
         R"({"model":"gpt-4o-mini-transcribe"})"},
        {"closed mid-dictation", Fault::closeMidDictation, {}, {}, {}, "Hello from the fake server.", true, {}},
        {"error event", Fault::errorEvent, {{24000, "First part."}}, {}, {}, "Hello from the fake server.", true, {}},
        {"no final transcript", Fault::noFinalTranscript, {{24000, "First part."}}, german, "- Acme", "Hello from the fake server.", true,
         R"({"language":"de","model":"gpt-4o-mini-transcribe","prompt":"You are transcribing spoken audio.\nApply these dictionary rules directly in the transcript you return.\nThe transcript may include names, email addresses, company names, or product terms.\n- Acme\nReturn only the transcript text."})"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakeRealtimeServer realtime;
        realtime.fault = c.fault;
        realtime.pauses = c.pauses;
        FakeOpenAIServer http;
        QNetworkAccessManager network;
        QTemporaryDir directory;
        const QString recording = directory.filePath("rec.m4a");
        QFile(recording).open(QIODevice::WriteOnly);

        const DictationRequest request{recording, "sk", TranscriptionMode::live, c.language, c.guidance, false, {}, {},
                                       std::make_shared<LiveTranscription>(std::chrono::milliseconds(300))};
        request.live->open(realtime.baseURL(), "sk");
        request.live->configure({transcriptionModelName(TranscriptionMode::live),
                                 c.language ? std::optional(c.language->code) : std::nullopt,
                                 transcriptionPrompt(c.guidance)});
        const std::vector<std::int16_t> speech(960, 1000);
        for (int chunk = 0; chunk < 50; ++chunk) // 40 ms each
            request.live->append(speech);

        const auto result = waitForResult(DictationPipeline(std::make_shared<OpenAIClient>(&network, http.baseURL())).run(request));
        EXPECT_EQ(result.value.value_or(result.errorText()), c.result);
        EXPECT_EQ(http.requests().size(), c.uploaded ? 1 : 0);
        EXPECT_EQ(realtime.requestURL().path() + "?" + realtime.requestURL().query(), "/v1/realtime?intent=transcription");
        EXPECT_EQ(realtime.authorization(), "Bearer sk");
        const QJsonObject input = realtime.configuration()["audio"].toObject()["input"].toObject();
        EXPECT_EQ(compact(input["format"].toObject()), R"({"rate":24000,"type":"audio/pcm"})");
        EXPECT_EQ(compact(input["turn_detection"].toObject()), R"({"type":"server_vad"})");
        if (!c.transcription.isEmpty()) {
            EXPECT_EQ(compact(input["transcription"].toObject()), c.transcription);
            EXPECT_EQ(realtime.receivedSamples(), 48000);
        }
    }
}

} // namespace
