// The built quorla on the headless desktop: closing its window never quits it, and a
// second launch hands over to it and brings the window back.
#include <QDeadlineTimer>
#include <QFileInfo>
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

// The process that owns a window, from its _NET_WM_PID.
qint64 processOfWindow(const QString &window)
{
    return xdotool({QStringLiteral("getwindowpid"), window}).value(0).toLongLong();
}

bool waitForProcessEnd(qint64 processId)
{
    const QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired()) {
        if (!QFileInfo::exists(QStringLiteral("/proc/%1").arg(processId)))
            return true;
        QTest::qWait(100);
    }
    return false;
}

class ApplicationLife : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            GTEST_SKIP() << "needs the headless desktop";
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral("config")));
        m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    }
    void TearDown() override
    {
        m_first.terminate();
        if (!m_first.waitForFinished(5000))
            m_first.kill();
    }

    void launchFirst()
    {
        m_first.setProcessEnvironment(m_environment);
        m_first.start(QStringLiteral(QUORLA_BINARY), {});
        ASSERT_TRUE(m_first.waitForStarted(5000));
    }
    // A second quorla: it must hand over and exit at once with status 0.
    void launchSecond()
    {
        QProcess second;
        second.setProcessEnvironment(m_environment);
        second.start(QStringLiteral(QUORLA_BINARY), {});
        ASSERT_TRUE(second.waitForFinished(10000));
        EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    }
    void expectRunning()
    {
        EXPECT_FALSE(m_first.waitForFinished(500)) << m_first.readAllStandardError().toStdString();
        EXPECT_EQ(m_first.state(), QProcess::Running);
    }

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QProcess m_first;
};

TEST_F(ApplicationLife, closingKeepsQuorlaRunningAndASecondLaunchBringsTheWindowBack)
{
    launchFirst();
    ASSERT_TRUE(waitForMainWindow(true)) << m_first.readAllStandardError().toStdString();

    // The window runs in a process of its own, which ends when the window closes.
    const QString window = visibleMainWindows().value(0);
    const qint64 windowProcess = processOfWindow(window);
    EXPECT_GT(windowProcess, 0);
    EXPECT_NE(windowProcess, m_first.processId());

    // Closed with the window menu's shortcut, once Escape has put the setup sheet away.
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window, QStringLiteral("key"),
             QStringLiteral("--clearmodifiers"), QStringLiteral("Escape"), QStringLiteral("ctrl+w")});
    ASSERT_TRUE(waitForMainWindow(false));
    EXPECT_TRUE(waitForProcessEnd(windowProcess));
    expectRunning();

    launchSecond();
    EXPECT_TRUE(waitForMainWindow(true));
    expectRunning();

    // Minimized, it comes back the same way.
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), visibleMainWindows().value(0)});
    ASSERT_TRUE(waitForMainWindow(false));
    launchSecond();
    EXPECT_TRUE(waitForMainWindow(true));
}

TEST_F(ApplicationLife, quitInTheWindowEndsQuorlaAndItsWindow)
{
    launchFirst();
    ASSERT_TRUE(waitForMainWindow(true)) << m_first.readAllStandardError().toStdString();
    const QString window = visibleMainWindows().value(0);
    const qint64 windowProcess = processOfWindow(window);

    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window, QStringLiteral("key"),
             QStringLiteral("--clearmodifiers"), QStringLiteral("Escape"), QStringLiteral("ctrl+q")});
    ASSERT_TRUE(m_first.waitForFinished(10000));
    EXPECT_EQ(m_first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_first.exitCode(), 0);
    EXPECT_TRUE(waitForProcessEnd(windowProcess));
}

} // namespace
