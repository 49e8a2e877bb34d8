#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/XkbKeyboardConnection.h"
#include "services/InputSourceLanguageDetector.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <gtest/gtest.h>

namespace {

bool setxkbmap(const QString &layout, const QString &variant = {})
{
    return QProcess::execute(QStringLiteral("setxkbmap"), {"-layout", layout, "-variant", variant}) == 0;
}

TEST(XkbInputSourceProvider, hintAndNoticeFollowTheLayout)
{
    ASSERT_FALSE(qEnvironmentVariableIsEmpty("DISPLAY")) << "needs the headless desktop";
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const auto keyboard = XkbKeyboardConnection::open();
    ASSERT_TRUE(keyboard && keyboard->lockGroup(0)); // setxkbmap keeps the locked group: start from the first one
    // Leaves the server's keyboard as the desktop started it.
    const auto restore = qScopeGuard([&] {
        setxkbmap(QStringLiteral("us"));
        keyboard->lockGroup(0);
    });
    ASSERT_TRUE(setxkbmap(QStringLiteral("us,de"), QStringLiteral(",nodeadkeys")));
    auto provider = std::make_shared<XkbInputSourceProvider>();
    InputSourceLanguageDetector detector(provider);
    int notices = 0;
    detector.startObservingChanges([&notices] { ++notices; });
    const auto noticed = [&notices](int count) { return QTest::qWaitFor([&] { return notices >= count; }, 5000); };
    const auto current = [&provider] { return provider->currentInputSource().value_or(InputSourceInfo{}); };

    EXPECT_EQ(detector.currentLanguageHint(), (InputLanguageHint{QStringLiteral("en"), QStringLiteral("English")}));

    // A group switch, as the user's switch key would do it.
    ASSERT_TRUE(keyboard->lockGroup(1));
    ASSERT_TRUE(noticed(1));
    const InputSourceInfo german = current();
    EXPECT_EQ(german.identifier, QStringLiteral("xkb:de:nodeadkeys"));
    EXPECT_EQ(german.localizedName, QStringLiteral("German (no dead keys)"));
    EXPECT_EQ(detector.currentLanguageHint(), (InputLanguageHint{QStringLiteral("de"), QStringLiteral("German")}));

    // A new layout list from setxkbmap.
    ASSERT_TRUE(setxkbmap(QStringLiteral("fr")));
    ASSERT_TRUE(noticed(2));
    EXPECT_EQ(current().identifier, QStringLiteral("xkb:fr"));
    EXPECT_EQ(detector.currentLanguageHint(), (InputLanguageHint{QStringLiteral("fr"), QStringLiteral("French")}));
}

} // namespace
