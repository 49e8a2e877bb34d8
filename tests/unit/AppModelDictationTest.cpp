#include "ModelFixture.h"

#include "services/GlobalPushToTalkMonitor.h"

#include "QtPrinters.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <coroutine>
#include <gtest/gtest.h>

namespace {

// Holds a coroutine until the test opens it: an open permission prompt, a slow request.
struct Gate {
    // QCoro copies what it awaits, so the awaiter only points at the gate.
    struct Opened {
        Gate *gate;
        bool await_ready() const noexcept { return gate->isOpen; }
        void await_suspend(std::coroutine_handle<> handle) { gate->waiting.push_back(handle); }
        void await_resume() const noexcept {}
    };

    std::vector<std::coroutine_handle<>> waiting;
    bool isOpen = false;

    Opened opened() { return {this}; }
    void open()
    {
        isOpen = true;
        for (auto handle : std::exchange(waiting, {}))
            handle.resume();
    }
};

enum class Target { named, unnamed, none, noAccessibility };

// What the status line says when a dictation from each source cannot start or finish.
const struct {
    DictationSource source;
    const char *startFailed;
    const char *finishFailed;
} failureStatuses[] = {
    {DictationSource::fnHold, "Couldn't start dictation from Fn.", "Couldn't finish dictation from Fn."},
    {DictationSource::fnToggle, "Couldn't start dictation from Fn + Space.", "Couldn't finish dictation from Fn + Space."},
    {DictationSource::manual, "Couldn't start recording.", "Couldn't finish transcription."},
    {DictationSource::commandHold, "Couldn't start dictation from `quorla dictation start`.",
     "Couldn't finish dictation from `quorla dictation stop`."},
    {DictationSource::commandToggle, "Couldn't start dictation from `quorla dictation toggle`.",
     "Couldn't finish dictation from `quorla dictation toggle`."},
};

// Every case runs with the trigger called "Fn" and with another name: the expected
// texts are written with "Fn" and read with the trigger's name.
class AppModelDictationTest : public ::testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        fixture.keyboard->triggerName = QString::fromUtf8(GetParam());
        fixture.workspace->frontmost = editor;
        fixture.inputSource->source = InputSourceInfo{"de", {}, "German", {"de"}};
        makeModel();
    }
    void makeModel()
    {
        model = &fixture.makeModel();
        model->setApiKeyDraft("sk-test");
        QObject::connect(model, &AppModel::statusMessageChanged, [this] { statuses.append(model->statusMessage()); });
    }
    QString t(QString text) const { return text.replace("Fn", QString::fromUtf8(GetParam())); }
    QStringList t(QStringList texts) const
    {
        for (QString &text : texts)
            text = t(text);
        return texts;
    }
    void begin(DictationSource source)
    {
        QCoro::waitFor(source == DictationSource::fnHold          ? model->globalPressToTalkBegan()
                       : source == DictationSource::fnToggle      ? model->globalToggleRecordingBegan()
                       : source == DictationSource::commandHold   ? model->commandPressToTalkBegan()
                       : source == DictationSource::commandToggle ? model->commandToggleRecordingRequested()
                                                                  : model->startManualRecording());
    }
    void end(DictationSource source)
    {
        QCoro::waitFor(source == DictationSource::fnHold          ? model->globalPressToTalkEnded()
                       : source == DictationSource::fnToggle      ? model->globalToggleRecordingEnded()
                       : source == DictationSource::commandHold   ? model->commandPressToTalkEnded()
                       : source == DictationSource::commandToggle ? model->commandToggleRecordingRequested()
                                                                  : model->stopRecordingAndTranscribe());
    }
    void dictate(DictationSource source)
    {
        begin(source);
        end(source);
    }
    qsizetype recordingsLeft() const { return QDir(fixture.recordingsDirectory()).entryList(QDir::Files).size(); }
    void openPermissionPromptUntil(Gate &gate, PermissionState answer)
    {
        fixture.audio->permission = PermissionState::notDetermined;
        fixture.audio->answerPermission = [&gate, answer]() -> QCoro::Task<PermissionState> {
            co_await gate.opened();
            co_return answer;
        };
    }

    ModelFixture fixture;
    AppModel *model = nullptr;
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, "TextEdit");
    QStringList statuses;
};

INSTANTIATE_TEST_SUITE_P(Triggers, AppModelDictationTest, ::testing::Values("Fn", "Right Ctrl"),
                         [](const auto &info) { return info.index == 0 ? "Fn" : "RightCtrl"; });

TEST_P(AppModelDictationTest, eachSourceWalksThroughItsStatusLines)
{
    struct Case {
        DictationSource source;
        Target target;
        bool language, autoCopy;
        QStringList expected;
    };
    const QList<Case> cases{
        {DictationSource::fnHold, Target::named, true, true,
         {"Dictation armed for TextEdit in German. Waiting for microphone...",
          "Recording for TextEdit in German. Release Fn to transcribe.", "Transcribing dictation in German...",
          "Typing into TextEdit...", "Transcript inserted into TextEdit and copied to the clipboard."}},
        {DictationSource::fnHold, Target::none, false, false,
         {"Recording... focus a text field before starting if you want Quorla to insert text.",
          "Recording... release Fn to transcribe.", "Transcribing dictation...", "Transcript ready."}},
        {DictationSource::fnHold, Target::noAccessibility, true, true,
         {"Recording in German... Accessibility is missing, so the transcript will stay in Quorla and be copied.",
          "Recording in German... release Fn to transcribe.", "Transcribing dictation in German...",
          "Transcript ready and copied to the clipboard."}},
        {DictationSource::fnToggle, Target::named, false, false,
         {"Dictation armed for TextEdit. Waiting for microphone...",
          "Recording for TextEdit. Press Space or Fn to transcribe.", "Transcribing dictation...",
          "Typing into TextEdit...", "Transcript inserted into TextEdit."}},
        {DictationSource::fnToggle, Target::unnamed, true, true,
         {"Dictation armed for the target app in German. Waiting for microphone...",
          "Recording for the target app in German. Press Space or Fn to transcribe.",
          "Transcribing dictation in German...", "Typing into the target app...",
          "Transcript inserted into the target app and copied to the clipboard."}},
        {DictationSource::fnToggle, Target::none, true, true,
         {"Recording in German... focus a text field before starting if you want Quorla to insert text.",
          "Recording in German... press Space or Fn to transcribe.", "Transcribing dictation in German...",
          "Transcript ready and copied to the clipboard."}},
        {DictationSource::commandHold, Target::named, true, true,
         {"Dictation armed for TextEdit in German. Waiting for microphone...",
          "Recording for TextEdit in German. Run `quorla dictation stop` to transcribe.",
          "Transcribing dictation in German...", "Typing into TextEdit...",
          "Transcript inserted into TextEdit and copied to the clipboard."}},
        {DictationSource::commandToggle, Target::none, false, false,
         {"Recording... focus a text field before starting if you want Quorla to insert text.",
          "Recording... run `quorla dictation toggle` to transcribe.", "Transcribing dictation...", "Transcript ready."}},
        {DictationSource::manual, Target::named, true, true, {"Requesting microphone access in German...",
          "Recording in German... press Stop & Transcribe when you're done.", "Transcribing audio in German...",
          "Transcript ready and copied to the clipboard."}},
        {DictationSource::manual, Target::named, false, false,
         {"Requesting microphone access...", "Recording... press Stop & Transcribe when you're done.",
          "Transcribing audio...", "Transcript ready."}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.expected.first().toStdString());
        fixture.accessibility->trusted = c.target != Target::noAccessibility;
        fixture.workspace->frontmost = c.target == Target::named ? editor
            : c.target == Target::unnamed ? std::make_shared<FakeApplication>(7, std::nullopt)
                                          : nullptr;
        if (!c.language)
            fixture.inputSource->source.reset();
        makeModel();
        model->setAutoCopyTranscript(c.autoCopy);
        statuses.clear();
        QGuiApplication::clipboard()->setText("before");

        dictate(c.source);
        EXPECT_EQ(statuses, t(c.expected));
        EXPECT_EQ(model->errorMessage(), std::nullopt);
        EXPECT_EQ(model->recentTranscripts().value(0).text, "hello world");
        EXPECT_EQ(QGuiApplication::clipboard()->text(), c.autoCopy ? "hello world" : "before");
        EXPECT_EQ(fixture.speech->transcribeCalls.last().languageCode,
                  c.language ? std::optional<QString>("de") : std::nullopt);
        EXPECT_EQ(recordingsLeft(), 0);
        EXPECT_FALSE(model->isBusy() || model->isRecording());
        fixture.inputSource->source = InputSourceInfo{"de", {}, "German", {"de"}};
    }
}

TEST_P(AppModelDictationTest, polishAndTranslationRunInOrderAndTheirResultIsInserted)
{
    fixture.inputSource->source->languages = {"en"};
    makeModel();
    model->setShouldPolishTranscript(true);
    model->setPolishPrompt("Formal tone");
    model->setTranslationLanguageCode("de");
    fixture.speech->transcript = "  hello wrld \n";
    fixture.speech->polished = "Hello world. ";
    fixture.speech->translated = " Hallo Welt.";
    statuses.clear();

    dictate(DictationSource::fnHold);
    EXPECT_EQ(statuses, t(QStringList{"Dictation armed for TextEdit in English. Waiting for microphone...",
                                      "Recording for TextEdit in English. Release Fn to transcribe.",
                                      "Transcribing dictation in English...", "Cleaning up text...",
                                      "Translating transcript to German...", "Typing into TextEdit...",
                                      "Transcript inserted into TextEdit and copied to the clipboard."}));
    const auto &call = fixture.speech->transcribeCalls.value(0);
    EXPECT_EQ(call.apiKey, "sk-test");
    EXPECT_EQ(call.prompt, std::nullopt); // an empty dictionary sends no prompt
    EXPECT_EQ(fixture.speech->polishCalls, QStringList{"hello wrld"});
    EXPECT_EQ(fixture.speech->lastPolishPrompt, "Formal tone");
    EXPECT_EQ(fixture.speech->translateCalls, QStringList{"Hello world."});
    EXPECT_EQ(fixture.inserter->calls.value(0).text, "Hallo Welt.");
    EXPECT_EQ(model->recentTranscripts().value(0).text, "Hallo Welt.");

    fixture.inputSource->source->languages = {"de"}; // already the target language
    dictate(DictationSource::fnHold);
    EXPECT_EQ(fixture.speech->translateCalls.size(), 1);
}

TEST_P(AppModelDictationTest, startFailuresLeaveTheModelIdle)
{
    struct Case {
        const char *error;
        std::function<void(ModelFixture &)> arrange;
        const char *apiKey = "sk-test";
    };
    const QList<Case> cases{
        {"Add your OpenAI API key first.", [](ModelFixture &) {}, " \n"},
        {"The app couldn't start recording from the microphone.",
         [](ModelFixture &f) { f.audio->startFailure = QuorlaError(QuorlaError::Kind::recordingFailed); }},
        {"Microphone access is required for recording. Enable it in System Settings > Privacy & Security > "
         "Microphone.",
         [](ModelFixture &f) { f.audio->permission = PermissionState::denied; }},
    };
    for (const Case &c : cases) {
        for (const auto &source : failureStatuses) {
            SCOPED_TRACE(std::string(source.startFailed) + c.error);
            fixture.audio->startFailure.reset();
            fixture.audio->permission = PermissionState::authorized;
            c.arrange(fixture);
            makeModel();
            model->setApiKeyDraft(c.apiKey);
            begin(source.source);
            EXPECT_EQ(model->errorMessage(), c.error);
            EXPECT_EQ(model->statusMessage(), t(source.startFailed));
            EXPECT_FALSE(model->isRecording() || model->isBusy());
            EXPECT_TRUE(fixture.speech->transcribeCalls.isEmpty());
        }
    }
}

TEST_P(AppModelDictationTest, finishFailuresAreShownAndTheRecordingIsDeleted)
{
    fixture.speech->transcribeReply = []() -> QCoro::Task<QString> {
        throw QuorlaError::apiFailure("Incorrect API key provided.");
        co_return QString();
    };
    for (const auto &source : failureStatuses) {
        dictate(source.source);
        EXPECT_EQ(model->errorMessage(), "Incorrect API key provided.");
        EXPECT_EQ(model->statusMessage(), t(source.finishFailed));
        EXPECT_EQ(recordingsLeft(), 0);
        EXPECT_FALSE(model->isBusy());
        EXPECT_TRUE(model->recentTranscripts().isEmpty());
    }

    fixture.speech->transcribeReply = {};
    fixture.speech->transcript = " \n ";
    dictate(DictationSource::fnHold);
    EXPECT_EQ(model->errorMessage(), "OpenAI returned an empty transcription.");
    EXPECT_EQ(recordingsLeft(), 0);

    QCoro::waitFor(model->stopRecordingAndTranscribe()); // nothing was recording
    EXPECT_EQ(model->errorMessage(), "There isn't an active recording to stop.");
    EXPECT_EQ(model->statusMessage(), "Couldn't finish transcription.");
}

TEST_P(AppModelDictationTest, shortOrQuietRecordingsAreNotSent)
{
    const QList<std::tuple<double, float, bool>> cases{
        {0.22, -10.0f, false}, {0.23, -10.0f, true},  {0.5, -25.0f, false}, {0.5, -15.0f, true},
        {0.75, -20.5f, false}, {0.75, -20.0f, true}, {0.8, -40.0f, true},
    };
    for (const auto &[duration, peak, sent] : cases) {
        SCOPED_TRACE(QStringLiteral("%1 s at %2 dBFS").arg(duration).arg(peak).toStdString());
        fixture.speech->transcribeCalls.clear();
        fixture.audio->duration = duration;
        fixture.audio->peakPower = peak;
        dictate(DictationSource::fnHold);
        EXPECT_EQ(fixture.speech->transcribeCalls.size(), sent ? 1 : 0);
        if (!sent) {
            EXPECT_EQ(model->statusMessage(), "No speech detected. Try dictating again.");
        }
        EXPECT_EQ(recordingsLeft(), 0);
        EXPECT_FALSE(model->isBusy());
    }
}

TEST_P(AppModelDictationTest, spaceDuringAHoldTurnsItIntoAToggle)
{
    begin(DictationSource::fnHold);
    QCoro::waitFor(model->globalToggleRecordingBegan());
    EXPECT_EQ(model->statusMessage(), t("Recording for TextEdit in German. Press Space or Fn to transcribe."));
    QCoro::waitFor(model->globalPressToTalkEnded());
    EXPECT_TRUE(model->isRecording());
    QCoro::waitFor(model->globalToggleRecordingEnded());
    EXPECT_FALSE(model->isRecording());
    ASSERT_EQ(fixture.inserter->calls.size(), 1);
    EXPECT_TRUE(fixture.inserter->calls[0].replaceTriggerSpace);
    EXPECT_FALSE(fixture.inserter->calls[0].restoreClipboard); // auto-copy keeps the transcript there

    dictate(DictationSource::fnHold);
    dictate(DictationSource::fnToggle);
    EXPECT_FALSE(fixture.inserter->calls[1].replaceTriggerSpace);
    EXPECT_TRUE(fixture.inserter->calls[2].replaceTriggerSpace);
}

TEST_P(AppModelDictationTest, theTargetCapturedAtTheKeyPressWinsOverTheFrontmostApplication)
{
    fixture.services.pushToTalkMonitor->apply(PushToTalkTriggerInput::fnDown());
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(9, "Terminal");
    begin(DictationSource::fnHold);
    EXPECT_EQ(model->statusMessage(), t("Recording for TextEdit in German. Release Fn to transcribe."));
}

TEST_P(AppModelDictationTest, thePermissionPromptDecidesWhetherTheTriggerIsStillWanted)
{
    struct Case {
        DictationSource source;
        PermissionState answer;
        std::function<QCoro::Task<>(AppModel &)> duringPrompt;
        QString status;
        bool records, releaseEnds = true;
    };
    const auto release = [](AppModel &m) { return m.globalPressToTalkEnded(); };
    const auto space = [](AppModel &m) { return m.globalToggleRecordingBegan(); };
    const auto toggleEnd = [](AppModel &m) { return m.globalToggleRecordingEnded(); };
    const auto nothing = [](AppModel &) -> QCoro::Task<> { co_return; };
    const QList<Case> cases{
        {DictationSource::fnHold, PermissionState::authorized, release,
         "Microphone access is ready. Use Fn again to start dictating.", false},
        {DictationSource::fnHold, PermissionState::denied, release,
         "Save your OpenAI API key, then focus a text field and hold Fn or press Fn + Space.", false},
        {DictationSource::fnToggle, PermissionState::authorized, toggleEnd,
         "Microphone access is ready. Use Fn again to start dictating.", false},
        {DictationSource::fnHold, PermissionState::authorized, nothing,
         "Recording for TextEdit in German. Release Fn to transcribe.", true},
        {DictationSource::fnHold, PermissionState::authorized, space,
         "Recording for TextEdit in German. Press Space or Fn to transcribe.", true, false},
        {DictationSource::fnHold, PermissionState::denied, nothing, "Couldn't start dictation from Fn.", false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.status.toStdString());
        Gate prompt;
        openPermissionPromptUntil(prompt, c.answer);
        makeModel();
        QCoro::Task<> starting = c.source == DictationSource::fnHold ? model->globalPressToTalkBegan()
                                                                      : model->globalToggleRecordingBegan();
        EXPECT_EQ(model->statusMessage(), t("Dictation armed for TextEdit in German. Waiting for microphone..."));
        QCoro::Task<> meanwhile = c.duringPrompt(*model);
        prompt.open();
        QCoro::waitFor(starting);
        QCoro::waitFor(meanwhile);
        EXPECT_EQ(model->statusMessage(), t(c.status));
        EXPECT_EQ(model->isRecording(), c.records);
        EXPECT_EQ(fixture.audio->recording, c.records);
        if (c.records) {
            QCoro::waitFor(model->globalPressToTalkEnded());
            EXPECT_EQ(model->isRecording(), !c.releaseEnds); // a hold promoted while waiting goes on
            QCoro::waitFor(model->globalToggleRecordingEnded());
            EXPECT_FALSE(model->isRecording());
        }
    }
}

TEST_P(AppModelDictationTest, anInputSourceChangeRightAroundAHoldStartCancelsIt)
{
    const QList<std::tuple<bool, qint64, bool>> cases{
        // change after the start?, ms between start and change, cancelled?
        {true, 0, true},   {true, 500, true},   {true, 800, false}, {true, -100, false},
        {false, 0, true},  {false, 500, true},  {false, 800, false},
    };
    for (const auto &[afterStart, gapMs, cancelled] : cases) {
        SCOPED_TRACE(QStringLiteral("%1 %2 ms").arg(afterStart).arg(gapMs).toStdString());
        fixture.speech->transcribeCalls.clear();
        const QDateTime start = fixture.now;
        if (afterStart) {
            begin(DictationSource::fnHold);
            model->handleInputSourceChange(start.addMSecs(gapMs));
        } else {
            model->handleInputSourceChange(start.addMSecs(-gapMs));
            begin(DictationSource::fnHold);
        }
        EXPECT_EQ(model->isRecording(), !cancelled);
        if (cancelled) {
            EXPECT_EQ(model->statusMessage(), t("Input language changed. Hold Fn again to dictate."));
        }
        end(DictationSource::fnHold);
        EXPECT_EQ(fixture.speech->transcribeCalls.size(), cancelled ? 0 : 1);
        EXPECT_EQ(recordingsLeft(), 0);
        model->handleInputSourceChange(start.addSecs(-60)); // out of the way of the next case
    }

    begin(DictationSource::fnToggle);
    model->handleInputSourceChange(fixture.now);
    EXPECT_TRUE(model->isRecording());
}

TEST_P(AppModelDictationTest, aFailedInsertionKeepsTheTranscript)
{
    fixture.inserter->failure = QuorlaError::textInsertionFailed("TextEdit refused the text.");
    for (const bool autoCopy : {true, false}) {
        model->setAutoCopyTranscript(autoCopy);
        QGuiApplication::clipboard()->setText("before");
        dictate(DictationSource::fnHold);
        EXPECT_EQ(model->statusMessage(),
                  autoCopy ? "Typing into TextEdit failed, but the transcript was copied to the clipboard."
                           : "Typing into TextEdit failed. The transcript is still available in the app.");
        EXPECT_EQ(model->errorMessage(), "TextEdit refused the text.");
        EXPECT_EQ(QGuiApplication::clipboard()->text(), autoCopy ? "hello world" : "before");
        EXPECT_EQ(fixture.inserter->calls.last().restoreClipboard, !autoCopy);
        EXPECT_EQ(model->recentTranscripts().value(0).text, "hello world");
        EXPECT_EQ(recordingsLeft(), 0);
    }
}

TEST_P(AppModelDictationTest, aManualStartDuringARecordingIsIgnored)
{
    begin(DictationSource::fnHold);
    begin(DictationSource::manual);
    EXPECT_EQ(recordingsLeft(), 1);
    end(DictationSource::fnHold);
    EXPECT_EQ(fixture.inserter->calls.size(), 1);
    EXPECT_EQ(recordingsLeft(), 0);
}

TEST_P(AppModelDictationTest, triggersWhileBusyAreIgnored)
{
    Gate reply;
    fixture.speech->transcribeReply = [&reply]() -> QCoro::Task<QString> {
        co_await reply.opened();
        co_return "hello world";
    };
    begin(DictationSource::fnHold);
    QCoro::Task<> finishing = model->globalPressToTalkEnded();
    ASSERT_TRUE(model->isBusy());

    dictate(DictationSource::fnHold);
    begin(DictationSource::fnToggle);
    QCoro::waitFor(model->stopRecordingAndTranscribe());
    EXPECT_FALSE(model->isRecording());
    EXPECT_FALSE(fixture.audio->recording);
    EXPECT_EQ(fixture.speech->transcribeCalls.size(), 1);
    EXPECT_EQ(model->statusMessage(), t("Transcribing dictation in German..."));

    reply.open();
    QCoro::waitFor(finishing);
    EXPECT_EQ(model->statusMessage(), "Transcript inserted into TextEdit and copied to the clipboard.");
    EXPECT_FALSE(model->isBusy());

    // The toggle asked for while busy is still wanted: the next hold starts as a toggle.
    begin(DictationSource::fnHold);
    EXPECT_EQ(model->statusMessage(), t("Recording for TextEdit in German. Press Space or Fn to transcribe."));
}

} // namespace
