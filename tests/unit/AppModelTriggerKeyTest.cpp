#include "ModelTest.h"

#include "models/TriggerKey.h"
#include "services/GlobalPushToTalkMonitor.h"

#include <QSignalSpy>

namespace {

using AppModelTriggerKeyTest = ModelTest;

TEST_F(AppModelTriggerKeyTest, aNewTriggerTakesEffectAtOnceAndIsRemembered)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    EXPECT_EQ(model.triggerKey(), "rightControl");
    QSignalSpy display(&model, &AppModel::triggerDisplayChanged);
    QSignalSpy inputs(&model, &AppModel::statusInputsChanged);

    model.setTriggerKey("scrollLock");
    EXPECT_EQ(model.triggerDisplay(), "Scroll Lock");
    EXPECT_EQ(model.triggerKey(), "scrollLock");
    EXPECT_EQ(fixture.keyboard->triggerKeyId, "scrollLock");
    EXPECT_EQ(display.count(), 1);
    EXPECT_GE(inputs.count(), 1);
    EXPECT_TRUE(model.statusMessage().contains("hold Scroll Lock or press Scroll Lock + Space"))
        << model.statusMessage().toStdString();
    EXPECT_EQ(stored().stringValue("triggerKey"), "scrollLock");

    fixture.keyboard->trigger(true);
    model.setTriggerKey("scrollLock");
    EXPECT_EQ(display.count(), 1) << "an equal value wakes no observer";
    EXPECT_TRUE(model.services().pushToTalkMonitor->triggerState().isFnPressed) << "and ends no gesture";
    fixture.keyboard->trigger(false);

    const QVariantList choices = model.property("triggerKeyChoices").toList();
    ASSERT_EQ(choices.size(), TriggerKey::all().size());
    EXPECT_EQ(choices[4].toMap().value("id"), "scrollLock");
    EXPECT_EQ(choices[4].toMap().value("displayName"), "Scroll Lock");

    model.setTriggerKey("bogus");
    EXPECT_EQ(model.triggerDisplay(), "Right Ctrl");
    EXPECT_FALSE(stored().contains("triggerKey")) << "an invalid choice removes the key";
}

TEST_F(AppModelTriggerKeyTest, aRefusedTriggerIsShownAndAWorkingOneClearsTheError)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    fixture.keyboard->triggerKeyFailure = QuorlaError::hotkeyRegistrationFailed("No Fn here.");
    model.setTriggerKey("fn");
    EXPECT_EQ(model.triggerRegistrationError(), "No Fn here.");

    fixture.keyboard->triggerKeyFailure.reset();
    model.setTriggerKey("pause");
    EXPECT_EQ(model.triggerRegistrationError(), std::nullopt);
    EXPECT_TRUE(fixture.keyboard->isInstalled());
    EXPECT_EQ(fixture.keyboard->installCount, 2);
}

} // namespace
