// Starting, showing and ending the window's process, with a stand-in for the window.
#include "ModelFixture.h"

#include "app/WindowProcess.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

struct ShowCase {
    const char *onShow;
    int expectedStarts;
    bool expectedOpen;
};

class WindowProcessShow : public ::testing::TestWithParam<ShowCase>
{
};

// The second show finds the window open (acknowledge), closing (exit) or failing (crash).
TEST_P(WindowProcessShow, aShowLostToAClosingWindowStartsItAgainButAFailureDoesNot)
{
    const ShowCase &showCase = GetParam();
    QTemporaryDir directory;
    const QString log = directory.filePath(QStringLiteral("starts"));
    qputenv("QUORLA_STAND_IN_LOG", log.toUtf8());
    qputenv("QUORLA_STAND_IN_ON_SHOW", showCase.onShow);
    ModelFixture fixture;
    WindowProcess window(fixture.makeModel(), QStringLiteral(QUORLA_WINDOW_STAND_IN));
    QSignalSpy shown(&window, &WindowProcess::windowShown);
    QSignalSpy released(&window, &WindowProcess::windowReleased);

    window.show();
    ASSERT_TRUE(shown.wait(10000));
    window.show();
    if (showCase.expectedOpen)
        ASSERT_TRUE(QTest::qWaitFor([&] { return shown.count() == 2; }, 10000));
    else
        ASSERT_TRUE(released.wait(10000));
    QTest::qWait(300);

    QFile starts(log);
    ASSERT_TRUE(starts.open(QIODevice::ReadOnly));
    EXPECT_EQ(starts.readAll().count('\n'), showCase.expectedStarts);
    EXPECT_EQ(window.isOpen(), showCase.expectedOpen);

    window.close();
    if (window.isOpen()) {
        EXPECT_TRUE(released.wait(10000));
    }
    EXPECT_FALSE(window.isOpen());
}

INSTANTIATE_TEST_SUITE_P(Cases, WindowProcessShow,
                         ::testing::Values(ShowCase{"acknowledge", 1, true}, ShowCase{"exit", 2, true},
                                           ShowCase{"crash", 1, false}));

TEST(WindowProcess, aMissingWindowProgramLeavesQuorlaAsItWas)
{
    ModelFixture fixture;
    WindowProcess window(fixture.makeModel(), QStringLiteral("/nonexistent/quorla-window"));
    QSignalSpy released(&window, &WindowProcess::windowReleased);
    window.show();
    EXPECT_TRUE(released.count() > 0 || released.wait(5000));
    EXPECT_FALSE(window.isOpen());
}

} // namespace
