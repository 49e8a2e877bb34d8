#include "ModelTest.h"

#include "AppInfo.h"

#include "services/GlobalPushToTalkMonitor.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

namespace {

using AppModelTriggerKeyTest = ModelTest;

// A refused trigger is shown, and a working one clears the error.
TEST_F(AppModelTriggerKeyTest, aNewTriggerTakesEffectAtOnceAndIsRemembered)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    QSignalSpy display(&model, &AppModel::triggerDisplayChanged);
    model.setTriggerKey("scrollLock");
    EXPECT_EQ(fixture.keyboard->triggerKeyId, "scrollLock");
    EXPECT_TRUE(model.statusMessage().contains("hold Scroll Lock or press Scroll Lock + Space"))
        << model.statusMessage().toStdString();
    EXPECT_EQ(stored().stringValue("triggerKey"), "scrollLock");
    fixture.keyboard->trigger(true);
    model.setTriggerKey("scrollLock");
    EXPECT_EQ(display.count(), 1) << "an equal value wakes no observer";
    EXPECT_TRUE(model.services().pushToTalkMonitor->triggerState().isFnPressed) << "and ends no gesture";
    fixture.keyboard->trigger(false);

    fixture.keyboard->triggerKeyFailure = QuorlaError::hotkeyRegistrationFailed("No Fn here.");
    model.setTriggerKey("fn");
    EXPECT_EQ(model.triggerRegistrationError(), "No Fn here.");
    fixture.keyboard->triggerKeyFailure.reset();
    model.setTriggerKey("pause");
    EXPECT_EQ(model.triggerRegistrationError(), std::nullopt);
    EXPECT_TRUE(fixture.keyboard->isInstalled());
    model.setTriggerKey("bogus");
    EXPECT_EQ(model.triggerDisplay(), "Right Ctrl");
    EXPECT_FALSE(stored().contains("triggerKey")) << "an invalid choice removes the key";

    // A hook that takes another route later says what it now cannot watch.
    fixture.keyboard->changeRoute(std::make_exception_ptr(QuorlaError::hotkeyRegistrationFailed("Bind a command.")), {});
    EXPECT_EQ(model.triggerRegistrationError(), "Bind a command.");
    fixture.keyboard->changeRoute(nullptr, "Only X11 windows.");
    EXPECT_EQ(model.triggerRegistrationError(), "Only X11 windows.");

    // A desktop that binds the toggle as a chord of its own names both once it has bound them.
    std::tie(fixture.keyboard->triggerName, fixture.keyboard->toggleName) = std::pair("Ctrl+Alt+D", "Ctrl+Alt+Space");
    fixture.keyboard->rename();
    EXPECT_EQ(model.statusMessage(), "Save your OpenAI API key, then focus a text field and hold Ctrl+Alt+D or press Ctrl+Alt+Space.");
}

// From the keyboard to the recording, through the monitor and the model as the
// application wires them.
TEST_F(AppModelTriggerKeyTest, holdingTheTriggerRecordsUntilItIsReleased)
{
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, "Editor");
    fixture.credentials->items[QStringLiteral(QUORLA_APP_ID "/openai-api-key")] = "sk-test";
    AppModel &model = fixture.makeModel();
    model.startAppServices();

    fixture.keyboard->trigger(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return model.isRecording(); }, 2000));
    fixture.keyboard->trigger(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !model.isRecording(); }, 2000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return fixture.speech->requests.size() == 1; }, 2000));

    fixture.keyboard->trigger(true); // a shortcut's recording is dropped unsent
    EXPECT_TRUE(QTest::qWaitFor([&] { return model.isRecording(); }, 2000));
    fixture.keyboard->otherKey();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !model.isRecording() && QDir(fixture.recordingsDirectory()).isEmpty(); }, 2000));
    fixture.keyboard->trigger(false);
    EXPECT_EQ(model.errorMessage(), std::nullopt);

    fixture.keyboard->trigger(true); // a tap records nothing
    fixture.keyboard->trigger(false);
    QTest::qWait(200);
    EXPECT_FALSE(model.isRecording());
    EXPECT_EQ(fixture.speech->requests.size(), 1);

    fixture.keyboard->losesReleases = true; // a long silence sends a hold whose release may be lost
    fixture.keyboard->trigger(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return model.isRecording(); }, 2000));
    std::tie(fixture.audio->peakPower, fixture.audio->duration) = std::tuple(-60.0f, 30.0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return fixture.speech->requests.size() == 2; }, 3000));
}

// The microphone opens with the key only for a press that can start a dictation now,
// and a tap closes it at once; a toggle's start, still on its way, finds it open.
TEST_F(AppModelTriggerKeyTest, theInputOpensWithTheKeyOnlyWhenADictationCanStart)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    const auto tapOpens = [this] {
        fixture.keyboard->trigger(true);
        const bool opened = fixture.audio->prepared;
        fixture.keyboard->trigger(false);
        EXPECT_FALSE(fixture.audio->prepared) << "a tap closes it at once";
        return opened;
    };
    std::optional<bool> openedWhileBusy;
    fixture.speech->transcribeReply = [&]() -> QCoro::Task<QString> {
        openedWhileBusy = tapOpens();
        co_return "hello";
    };
    const std::tuple<const char *, std::function<void()>, bool> cases[] = {
        {"no key", [] {}, false},
        {"ready", [&] { model.setApiKeyDraft("sk-test"); }, true},
        {"turned off", [&] { model.setStartListeningOnTriggerDown(false); }, false},
        {"microphone denied", [&] {
             model.setStartListeningOnTriggerDown(true);
             fixture.audio->permission = PermissionState::denied;
             model.refreshPermissions(false);
         },
         false},
    };
    for (const auto &[name, arrange, opens] : cases) {
        arrange();
        EXPECT_EQ(tapOpens(), opens) << name;
    }

    fixture.audio->permission = PermissionState::authorized;
    model.refreshPermissions(false);
    QCoro::waitFor(model.startManualRecording());
    QCoro::waitFor(model.stopRecordingAndTranscribe());
    EXPECT_EQ(openedWhileBusy, false);

    fixture.keyboard->trigger(true);
    fixture.keyboard->otherKey();
    EXPECT_FALSE(fixture.audio->prepared) << "a shortcut closes it at once";
    fixture.keyboard->trigger(false);

    fixture.keyboard->trigger(true);
    fixture.keyboard->spaceDown(false, true);
    fixture.keyboard->trigger(false);
    EXPECT_TRUE(fixture.audio->prepared);
}

} // namespace
