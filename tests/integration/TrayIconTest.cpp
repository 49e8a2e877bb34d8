// The tray item on the headless desktop's XEmbed tray. Runs in its own executable:
// the menu is a widget, so it needs a QApplication.
#include "ModelFixture.h"

#include "shell/TrayIcon.h"

#include <QApplication>
#include <QClipboard>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

QStringList actionTexts(QMenu &menu)
{
    QStringList texts;
    for (QAction *action : menu.actions())
        texts << (action->isSeparator() && action->text().isEmpty() ? QStringLiteral("---") : action->text());
    return texts;
}

TEST(TrayIcon, followsThePreferenceAndItsMenuDictatesOpensQuitsAndOffersRecent)
{
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        GTEST_SKIP() << "needs the headless desktop's tray";
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    TrayIcon tray(model);
    EXPECT_FALSE(tray.isShown()) << "off by default";
    QSignalSpy shown(&tray, &TrayIcon::shown);
    model.setShowMenuBarIcon(true);
    EXPECT_EQ(shown.count(), 1);
    model.setShowMenuBarIcon(false);
    EXPECT_FALSE(tray.isShown());

    EXPECT_EQ(actionTexts(tray.menu()), (QStringList{QStringLiteral("Recent"), QStringLiteral("No recent dictations"),
                                                     QStringLiteral("---"), QStringLiteral("Start Dictation"),
                                                     QStringLiteral("Open Quorla"), QStringLiteral("Quit")}));
    EXPECT_FALSE(tray.menu().actions().at(1)->isEnabled());

    QSignalSpy open(&tray, &TrayIcon::openRequested);
    QSignalSpy quit(&tray, &TrayIcon::quitRequested);
    tray.menu().actions().at(4)->trigger();
    tray.menu().actions().at(5)->trigger();
    EXPECT_EQ(open.count(), 1);
    EXPECT_EQ(quit.count(), 1);

    // A dictation started and stopped from the menu; afterwards the menu offers its text.
    model.setApiKeyDraft(QStringLiteral("sk-test"));
    QAction *dictation = tray.menu().actions().at(3);
    dictation->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return model.isRecording(); }));
    EXPECT_EQ(dictation->text(), QStringLiteral("Stop Dictation"));
    EXPECT_EQ(tray.symbol(), QStringLiteral("waveform.badge.microphone"));
    fixture.speech->transcript = QStringLiteral("Call me back  after\nlunch, please, it is urgent");
    dictation->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isBusy() && !model.recentTranscripts().isEmpty(); }));
    EXPECT_EQ(tray.symbol(), QStringLiteral("waveform.mid"));
    QAction *entry = tray.menu().actions().at(1);
    EXPECT_TRUE(entry->text().startsWith(QStringLiteral("Call me back"))) << entry->text().toStdString();
    entry->trigger();
    EXPECT_EQ(QApplication::clipboard()->text(), fixture.speech->transcript);
}

} // namespace

int main(int argc, char **argv)
{
    // Listing the tests happens without the desktop; running them needs it.
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
