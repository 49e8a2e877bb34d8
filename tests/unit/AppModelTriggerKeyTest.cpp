#include "ModelFixture.h"

#include "models/TriggerKey.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "stores/PreferencesStore.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

class AppModelTriggerKeyTest : public ::testing::Test
{
protected:
    PreferencesStore stored() const { return PreferencesStore(fixture.preferencesPath()); }

    ModelFixture fixture;
};

TEST_F(AppModelTriggerKeyTest, aNewTriggerTakesEffectAtOnceAndIsRemembered)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    EXPECT_EQ(model.triggerKey(), QStringLiteral("rightControl"));
    QSignalSpy display(&model, &AppModel::triggerDisplayChanged);
    QSignalSpy inputs(&model, &AppModel::statusInputsChanged);

    model.setTriggerKey(QStringLiteral("scrollLock"));
    EXPECT_EQ(model.triggerDisplay(), QStringLiteral("Scroll Lock"));
    EXPECT_EQ(model.triggerKey(), QStringLiteral("scrollLock"));
    EXPECT_EQ(fixture.keyboard->triggerKeyId, QStringLiteral("scrollLock"));
    EXPECT_EQ(display.count(), 1);
    EXPECT_GE(inputs.count(), 1);
    EXPECT_TRUE(model.statusMessage().contains(QStringLiteral("hold Scroll Lock or press Scroll Lock + Space")))
        << model.statusMessage().toStdString();
    EXPECT_EQ(stored().stringValue(QStringLiteral("triggerKey")), QStringLiteral("scrollLock"));

    fixture.keyboard->trigger(true);
    model.setTriggerKey(QStringLiteral("scrollLock"));
    EXPECT_EQ(display.count(), 1) << "an equal value wakes no observer";
    EXPECT_TRUE(model.services().pushToTalkMonitor->triggerState().isFnPressed) << "and ends no gesture";
    fixture.keyboard->trigger(false);

    const QVariantList choices = model.property("triggerKeyChoices").toList();
    ASSERT_EQ(choices.size(), TriggerKey::all().size());
    EXPECT_EQ(choices[4].toMap().value("id"), QStringLiteral("scrollLock"));
    EXPECT_EQ(choices[4].toMap().value("displayName"), QStringLiteral("Scroll Lock"));

    model.setTriggerKey(QStringLiteral("bogus"));
    EXPECT_EQ(model.triggerDisplay(), QStringLiteral("Right Ctrl"));
    EXPECT_FALSE(stored().contains(QStringLiteral("triggerKey"))) << "an invalid choice removes the key";
}

TEST_F(AppModelTriggerKeyTest, aRefusedTriggerIsShownAndAWorkingOneClearsTheError)
{
    AppModel &model = fixture.makeModel();
    model.startAppServices();
    fixture.keyboard->triggerKeyFailure = QuorlaError::hotkeyRegistrationFailed(QStringLiteral("No Fn here."));
    model.setTriggerKey(QStringLiteral("fn"));
    EXPECT_EQ(model.triggerRegistrationError(), QStringLiteral("No Fn here."));

    fixture.keyboard->triggerKeyFailure.reset();
    model.setTriggerKey(QStringLiteral("pause"));
    EXPECT_EQ(model.triggerRegistrationError(), std::nullopt);
    EXPECT_TRUE(fixture.keyboard->isInstalled());
    EXPECT_EQ(fixture.keyboard->installCount, 2);
}

} // namespace
