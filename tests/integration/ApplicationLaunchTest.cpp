#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// The run command's promise: Quorla starts on the desktop and stays up.
TEST(ApplicationLaunch, quorlaStartsAndKeepsRunning)
{
    ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));

    QProcess quorla;
    quorla.setProcessEnvironment(environment);
    quorla.start(QStringLiteral(QUORLA_BINARY), {});
    ASSERT_TRUE(quorla.waitForStarted(5000));
    EXPECT_FALSE(quorla.waitForFinished(2000)) << quorla.readAllStandardError().toStdString();
    EXPECT_EQ(quorla.state(), QProcess::Running);

    quorla.terminate();
    if (!quorla.waitForFinished(5000))
        quorla.kill();
}

} // namespace
