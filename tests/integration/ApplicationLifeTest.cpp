// The built quorla on the headless desktop: its life as the user starts, closes and quits it.
#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

QStringList xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished();
    }
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList visibleMainWindows()
{
    return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                    QStringLiteral("^Quorla$")});
}

void keysToMainWindow(const QString &keys)
{
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), visibleMainWindows().value(0),
             QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Escape"), keys});
}

// Polls until the main window is shown or hidden; the deadline only keeps a broken
// build from hanging the test.
bool waitForMainWindow(bool visible)
{
    const QDeadlineTimer deadline(15000);
    while (!deadline.hasExpired()) {
        if (visibleMainWindows().isEmpty() != visible)
            return true;
        QTest::qWait(100);
    }
    return false;
}

// A second quorla hands over to the first and exits at once; its exit code, or -1.
int launchSecond(const QProcessEnvironment &environment)
{
    QProcess second;
    second.setProcessEnvironment(environment);
    second.start(QStringLiteral(QUORLA_BINARY), {});
    return second.waitForFinished(10000) && second.exitStatus() == QProcess::NormalExit ? second.exitCode() : -1;
}

// Closing the window never quits Quorla; a second launch brings the window back, also
// from minimized; Quit in the window ends Quorla.
TEST(ApplicationLife, closingKeepsQuorlaRunningASecondLaunchBringsTheWindowBackAndQuitEndsIt)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        GTEST_SKIP() << "needs the headless desktop";
    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    QProcess first; // killed on the way out if a step fails
    first.setProcessEnvironment(environment);
    first.start(QStringLiteral(QUORLA_BINARY), {});
    ASSERT_TRUE(waitForMainWindow(true)) << first.readAllStandardError().toStdString();

    // Closed with the window menu's shortcut, once Escape has put the setup sheet away.
    keysToMainWindow(QStringLiteral("ctrl+w"));
    ASSERT_TRUE(waitForMainWindow(false));
    EXPECT_FALSE(first.waitForFinished(500)) << first.readAllStandardError().toStdString();
    EXPECT_EQ(launchSecond(environment), 0);
    EXPECT_TRUE(waitForMainWindow(true));

    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), visibleMainWindows().value(0)});
    ASSERT_TRUE(waitForMainWindow(false));
    EXPECT_EQ(launchSecond(environment), 0);
    ASSERT_TRUE(waitForMainWindow(true));

    keysToMainWindow(QStringLiteral("ctrl+q"));
    ASSERT_TRUE(first.waitForFinished(10000));
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
}

} // namespace
