#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QProcessEnvironment quorlaEnvironment(const QTemporaryDir &home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    return environment;
}

// A second launch hands over to the running Quorla on the session bus and exits.
TEST(SingleInstance, secondLaunchAsksTheFirstToShowItsWindowAndExits)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        GTEST_SKIP() << "needs the headless desktop";
    QTemporaryDir home;
    QProcess first;
    first.setProcessEnvironment(quorlaEnvironment(home));
    first.start(QStringLiteral(QUORLA_BINARY), {});
    ASSERT_TRUE(first.waitForStarted(5000));
    ASSERT_FALSE(first.waitForFinished(2000)) << first.readAllStandardError().toStdString();

    QProcess second;
    second.setProcessEnvironment(quorlaEnvironment(home));
    second.start(QStringLiteral(QUORLA_BINARY), {});
    ASSERT_TRUE(second.waitForFinished(10000));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    EXPECT_EQ(first.state(), QProcess::Running);

    first.terminate();
    if (!first.waitForFinished(5000))
        first.kill();
}

} // namespace
