#include "ModelFixture.h"

#include "models/CustomDictionary.h"
#include "platform/QtClipboard.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "support/PlatformWords.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <gtest/gtest.h>

namespace {

using Source = DictationSource;

class AppModelDictationTest : public ::testing::Test
{
protected:
    AppModelDictationTest()
    {
        fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, "TextEdit");
        makeModel();
    }
    void makeModel()
    {
        model = &fixture.makeModel();
        model->setApiKeyDraft("sk-test");
        QObject::connect(model, &AppModel::statusMessageChanged, [this] { statuses.append(model->statusMessage()); });
        statuses.clear();
    }
    // The trigger (or the window's record button) going down or up.
    QCoro::Task<> press(Source source, bool down)
    {
        using Operation = QCoro::Task<> (AppModel::*)();
        static constexpr Operation operations[5][2] = {
            {&AppModel::stopRecordingAndTranscribe, &AppModel::startManualRecording},
            {&AppModel::globalPressToTalkEnded, &AppModel::globalPressToTalkBegan},
            {&AppModel::globalToggleRecordingEnded, &AppModel::globalToggleRecordingBegan},
            {&AppModel::commandPressToTalkEnded, &AppModel::commandPressToTalkBegan},
            {&AppModel::commandToggleRecordingRequested, &AppModel::commandToggleRecordingRequested}};
        return (model->*operations[int(source)][down])();
    }
    void dictate(Source source)
    {
        QCoro::waitFor(press(source, true));
        QCoro::waitFor(press(source, false));
    }
    qsizetype recordingsLeft() const { return QDir(fixture.recordingsDirectory()).entryList(QDir::Files).size(); }

    ModelFixture fixture;
    AppModel *model = nullptr;
    QStringList statuses;
};

// The settings and the dictionary are taken when the recording is sent; edits made
// while it is in flight wait for the next dictation.
TEST_F(AppModelDictationTest, theDictationIsSentWithTheSettingsOfThatMoment)
{
    fixture.inputSource->source = InputSourceInfo{"en", {}, "English", {"en"}};
    makeModel();
    model->setShouldPolishTranscript(true);
    model->setPolishPrompt("Formal tone");
    model->setTranslationLanguageCode("de");
    model->addCustomDictionaryEntry("Acme", std::nullopt, false);
    fixture.speech->polished = "Hello Acme.";
    fixture.speech->translated = "Hallo Acme.";
    fixture.speech->transcribeReply = [this]() -> QCoro::Task<QString> {
        model->addCustomDictionaryEntry("Later", std::nullopt, false);
        model->setPolishPrompt("Casual");
        co_return "hello acme";
    };
    dictate(Source::fnHold);

    EXPECT_EQ(fixture.speech->requests, (QStringList{"transcribe sk-test fast en [prompt]",
                                                     "polish 'hello acme' " + *customDictionaryGuidance({{"Acme", {}}}) + " Formal tone",
                                                     "translate 'Hello Acme.' de from en English"}));
    EXPECT_EQ(statuses, (QStringList{"\"Acme\" added to Dictionary.",
                                     "Dictation armed for TextEdit in English. Waiting for microphone...",
                                     "Recording for TextEdit in English. Release Fn to transcribe.",
                                     "Transcribing dictation in English...", "\"Later\" added to Dictionary.",
                                     "Cleaning up text...", "Translating transcript to German...", "Typing into TextEdit...",
                                     "Transcript inserted into TextEdit and copied to the clipboard."}));
    EXPECT_EQ(fixture.inserter->calls.value(0).text, "Hallo Acme.");
    EXPECT_EQ(model->recentTranscripts().value(0).text, "Hallo Acme.");
}

TEST_F(AppModelDictationTest, eachSourceShowsItsStepsAndItsFailures)
{
    const struct {
        Source source;
        bool accessibility;
        const char *startFailed, *finishFailed;
        QStringList steps;
    } sources[] = {
        {Source::fnHold, false, "Couldn't start dictation from Fn.", "Couldn't finish dictation from Fn.", {"Recording... Accessibility is missing, so the transcript will stay in Quorla and be copied.", "Recording... release Fn to transcribe.", "Transcribing dictation...", "Transcript ready."}},
        {Source::commandToggle, true, "Couldn't start dictation from `quorla dictation toggle`.", "Couldn't finish dictation from `quorla dictation toggle`.", {"Recording... focus a text field before starting if you want Quorla to insert text.", "Recording... run `quorla dictation toggle` to transcribe.", "Transcribing dictation...", "Transcript ready."}},
        {Source::manual, true, "Couldn't start recording.", "Couldn't finish transcription.", {"Requesting microphone access...", "Recording... press Stop & Transcribe when you're done.", "Transcribing audio...", "Transcript ready."}},
    };
    const auto check = [&](const QString &error, const QString &status) {
        EXPECT_EQ(model->errorMessage(), error);
        EXPECT_EQ(model->statusMessage(), status);
        EXPECT_FALSE(model->isRecording() || model->isBusy());
        EXPECT_EQ(recordingsLeft(), 0);
    };
    fixture.workspace->frontmost = nullptr;
    for (const auto &s : sources) {
        SCOPED_TRACE(s.startFailed);
        fixture.accessibility->trusted = s.accessibility;
        makeModel();
        model->setAutoCopyTranscript(false);
        dictate(s.source);
        EXPECT_EQ(statuses, s.steps);
        model->setApiKeyDraft(" \n");
        QCoro::waitFor(press(s.source, true));
        check("Add your OpenAI API key first.", s.startFailed);
        model->setApiKeyDraft("sk-test");
        fixture.speech->transcript = " Let me know if you'd like any changes.";
        dictate(s.source);
        check("OpenAI returned an empty transcription.", s.finishFailed);
        EXPECT_EQ(model->recentTranscripts().size(), 1); // only the first dictation's text
        fixture.speech->transcript = "hello world";
    }
    QCoro::waitFor(model->stopRecordingAndTranscribe()); // nothing was recording
    check("There isn't an active recording to stop.", "Couldn't finish transcription.");
}

TEST_F(AppModelDictationTest, shortOrQuietRecordingsAreNotSent)
{
    for (const auto &[duration, peak, sent] : std::initializer_list<std::tuple<double, float, bool>>{
             {0.22, -10.0f, false}, {0.23, -10.0f, true}, {0.75, -20.5f, false}, {0.75, -20.0f, true}, {0.8, -40.0f, true}}) {
        SCOPED_TRACE(duration);
        fixture.speech->requests.clear();
        std::tie(fixture.audio->duration, fixture.audio->peakPower) = std::tie(duration, peak);
        dictate(Source::fnHold);
        EXPECT_EQ(fixture.speech->requests.size(), sent ? 1 : 0);
        EXPECT_EQ(model->statusMessage() == "No speech detected. Try dictating again.", !sent);
        EXPECT_EQ(recordingsLeft(), 0);
    }
}

TEST_F(AppModelDictationTest, spaceDuringAHoldTurnsItIntoAToggle)
{
    fixture.services.pushToTalkMonitor->apply(PushToTalkTriggerInput::fnDown());
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(9, "Terminal"); // the target is taken at the press
    QCoro::waitFor(press(Source::fnHold, true));
    QCoro::waitFor(model->globalToggleRecordingBegan());
    EXPECT_EQ(model->statusMessage(), "Recording for TextEdit. Press Space or Fn to transcribe.");
    QCoro::waitFor(model->globalPressToTalkEnded());
    EXPECT_TRUE(model->isRecording());
    QCoro::waitFor(model->globalToggleRecordingEnded());
    EXPECT_TRUE(fixture.inserter->calls.value(0).replaceTriggerSpace);
}

TEST_F(AppModelDictationTest, anInputSourceChangeRightAfterAHoldStartCancelsIt)
{
    // The first source to come into sight is no switch.
    fixture.inputSource->source = InputSourceInfo{"fr", {}, "French", {"fr"}};
    model->handleInputSourceChange(fixture.now);
    EXPECT_EQ(model->currentInputLanguageHint(), (InputLanguageHint{"fr", "French"}));
    QCoro::waitFor(press(Source::fnHold, true));
    EXPECT_TRUE(model->isRecording());
    QCoro::waitFor(press(Source::fnHold, false));
    for (const auto &[gapMs, cancelled] : std::initializer_list<std::pair<qint64, bool>>{{501, false}, {500, true}, {0, true}}) {
        SCOPED_TRACE(gapMs);
        QCoro::waitFor(press(Source::fnHold, true));
        model->handleInputSourceChange(fixture.now.addMSecs(gapMs));
        EXPECT_EQ(model->statusMessage() == "Input language changed. Hold Fn again to dictate.", cancelled);
        QCoro::waitFor(press(Source::fnHold, false));
        EXPECT_EQ(recordingsLeft(), 0);
    }
}

TEST_F(AppModelDictationTest, aFailedInsertionKeepsTheTranscript)
{
    fixture.inserter->failure = QuorlaError::textInsertionFailed("TextEdit refused the text.");
    QGuiApplication::clipboard()->setText("an earlier copy");
    dictate(Source::fnHold);
    EXPECT_EQ(model->statusMessage(), "Typing into TextEdit failed, but the transcript was copied to the clipboard.");
    EXPECT_EQ(model->errorMessage(), "TextEdit refused the text.");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), model->recentTranscripts().value(0).text);

    // Where no key can be pressed, the paste route leaves the transcript on the clipboard;
    // where the desktop takes the clipboard only from a focused window, it is only in History.
    const PlatformWords &words = *(fixture.words = &PlatformWords::linuxDesktop());
    for (const auto &[writer, expected] : {std::pair(QtClipboard::Writer::anyone, words.noPasteRouteStatus),
                                           std::pair(QtClipboard::Writer::focusedWindow, words.clipboardRefusedStatus)}) {
        fixture.clipboard = std::make_shared<QtClipboard>(writer);
        makeModel();
        fixture.inserter->failure = QuorlaError::textInsertionFailed("Couldn't synthesize the paste shortcut.");
        fixture.inserter->onInsert = [&](const QString &text) { fixture.clipboard->writeText(Clipboard::Selection::clipboard, text, true); };
        dictate(Source::fnHold);
        EXPECT_EQ(model->statusMessage(), expected);
    }
}

TEST_F(AppModelDictationTest, triggersWhileRecordingOrBusyAreIgnored)
{
    fixture.speech->transcribeReply = [this]() -> QCoro::Task<QString> {
        model->setApiKeyDraft(""); // a start that got past the guard would fail loudly
        for (const Source source : {Source::fnHold, Source::fnToggle, Source::manual, Source::commandHold, Source::commandToggle}) {
            co_await press(source, true);
            co_await press(source, false);
        }
        co_return "hello world";
    };
    QCoro::waitFor(press(Source::fnHold, true));
    QCoro::waitFor(press(Source::manual, true)); // a second recording would orphan the first one's file
    QCoro::waitFor(press(Source::fnHold, false));
    EXPECT_EQ(fixture.speech->requests.size(), 1);
    EXPECT_EQ(fixture.inserter->calls.size(), 1);
    EXPECT_EQ(recordingsLeft(), 0);
    EXPECT_EQ(model->errorMessage(), std::nullopt);
}

} // namespace
