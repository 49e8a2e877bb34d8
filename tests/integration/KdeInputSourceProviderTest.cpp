#include "platform/linux/KdeInputSourceProvider.h"

#include <QDBusInterface>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// Plasma's layout service as a D-Bus mock on the test desktop's bus: the provider reads the
// active layout, maps its long name, and follows layoutChanged.
TEST(KdeInputSourceProviderTest, followsTheLayoutServiceAndItsChanges)
{
    QProcess mock;
    mock.start(QStringLiteral("/usr/bin/python3"), {"-m", "dbusmock", "org.kde.keyboard", "/Layouts", "org.kde.KeyboardLayouts"});
    const auto stop = qScopeGuard([&] { mock.kill(); mock.waitForFinished(); });
    QDBusInterface control(QStringLiteral("org.kde.keyboard"), QStringLiteral("/Layouts"), QStringLiteral("org.freedesktop.DBus.Mock"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return control.call(QStringLiteral("GetCalls")).type() == QDBusMessage::ReplyMessage; }, 10000));
    const auto setIndex = [&](int index) {
        control.call(QStringLiteral("AddMethod"), QString(), QStringLiteral("getLayout"), QString(), QStringLiteral("u"),
                     QStringLiteral("ret = %1").arg(index));
    };
    control.call(QStringLiteral("AddMethod"), QString(), QStringLiteral("getLayoutsList"), QString(), QStringLiteral("a(sss)"),
                 QStringLiteral("ret = [('us', 'us', 'English (US)'), ('de', 'de', 'German (no dead keys)')]"));
    setIndex(1);

    KdeInputSourceProvider provider(QDBusConnection::sessionBus());
    int changes = 0;
    provider.startObservingChanges([&] { ++changes; });
    const std::tuple<int, QString, QString> steps[] = {{1, "xkb:de:nodeadkeys", "de"}, {0, "xkb:us", "en"}};
    for (const auto &[index, identifier, language] : steps) {
        setIndex(index);
        control.call(QStringLiteral("EmitSignal"), QString(), QStringLiteral("layoutChanged"), QStringLiteral("u"),
                     QVariantList{QVariant::fromValue(uint(index))});
        (void)QTest::qWaitFor([&, &identifier = identifier] { return provider.currentInputSource().value_or(InputSourceInfo{}).identifier == identifier; }, 5000);
        const InputSourceInfo source = provider.currentInputSource().value_or(InputSourceInfo{});
        EXPECT_EQ(source.identifier, identifier);
        EXPECT_TRUE(source.languages.contains(language)) << source.languages.join(u' ').toStdString();
    }
    EXPECT_EQ(changes, 2);
}

} // namespace
