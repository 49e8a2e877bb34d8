// The window's mirror of the model over a real socket pair, against the model over fakes.
#include "ModelFixture.h"

#include "app/RemoteWindowModel.h"
#include "app/WindowModelHost.h"

#include <QLocalSocket>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Two connected sockets, as the window's process and Quorla hold them.
std::pair<QLocalSocket *, QLocalSocket *> socketPair()
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return {nullptr, nullptr};
    auto *first = new QLocalSocket;
    auto *second = new QLocalSocket;
    first->setSocketDescriptor(ends[0]);
    second->setSocketDescriptor(ends[1]);
    return {first, second};
}

bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 5000);
}

// Every property the window can read differs between the model and its mirror.
QStringList differingProperties(const WindowModel &model, const WindowModel &mirror)
{
    QStringList differing;
    const QMetaObject &meta = WindowModel::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        if (property.read(&model) != property.read(&mirror))
            differing << QString::fromLatin1(property.name());
    }
    return differing;
}

class WindowModelLink : public ::testing::Test
{
protected:
    void SetUp() override
    {
        fixture.makeModel();
        auto [hostEnd, windowEnd] = socketPair();
        ASSERT_TRUE(hostEnd && windowEnd);
        host = std::make_unique<WindowModelHost>(fixture.model(), hostEnd);
        mirror = std::make_unique<RemoteWindowModel>(windowEnd);
        ASSERT_TRUE(waitFor([this] { return mirror->isReady(); }));
    }

    ModelFixture fixture;
    std::unique_ptr<WindowModelHost> host;
    std::unique_ptr<RemoteWindowModel> mirror;
};

TEST_F(WindowModelLink, mirrorsEveryPropertyAndEachChangeOnce)
{
    AppModel &model = fixture.model();
    EXPECT_EQ(differingProperties(model, *mirror), QStringList());

    QSignalSpy polish(mirror.get(), &WindowModel::shouldPolishTranscriptChanged);
    QSignalSpy translation(mirror.get(), &WindowModel::translationLanguageCodeChanged);
    model.setShouldPolishTranscript(true);
    model.setTranslationLanguageCode(QStringLiteral("de"));
    model.addCustomDictionaryEntry(QStringLiteral("kwor la"), QStringLiteral("Quorla"), true);
    model.presentError(QStringLiteral("Something failed."));
    ASSERT_TRUE(waitFor([&] { return differingProperties(model, *mirror).isEmpty(); }))
        << differingProperties(model, *mirror).join(u' ').toStdString();
    EXPECT_EQ(mirror->customDictionaryEntries().value(0).replacement, QStringLiteral("Quorla"));
    EXPECT_EQ(polish.count(), 1);
    // The code and its summary change together: one announcement for both.
    EXPECT_EQ(translation.count(), 1);
}

TEST_F(WindowModelLink, writesReachTheModelAndTypingIsNeverUndoneByTheirEchoes)
{
    AppModel &model = fixture.model();
    QStringList shown;
    QObject::connect(mirror.get(), &WindowModel::polishPromptChanged, [&] { shown << mirror->polishPrompt(); });
    for (const char *typed : {"K", "Ke", "Kee", "Keep"})
        mirror->setPolishPrompt(QString::fromLatin1(typed));
    EXPECT_EQ(mirror->polishPrompt(), QStringLiteral("Keep"));
    ASSERT_TRUE(waitFor([&] { return model.polishPrompt() == QStringLiteral("Keep"); }));
    QTest::qWait(50);
    EXPECT_EQ(shown, QStringList({"K", "Ke", "Kee", "Keep"}));

    // The model's own reading of a write wins once it is applied.
    mirror->setTranslationLanguageCode(QStringLiteral("DE"));
    ASSERT_TRUE(waitFor([&] { return mirror->translationLanguageCode() == QStringLiteral("de"); }));
    EXPECT_EQ(model.translationLanguageCode(), QStringLiteral("de"));
    EXPECT_EQ(mirror->translationLanguageSummary(), model.translationLanguageSummary());
}

TEST_F(WindowModelLink, carriesOutRequestsAndAnnouncesOnlyTakenEntries)
{
    AppModel &model = fixture.model();
    QSignalSpy added(mirror.get(), &WindowModel::customDictionaryEntryAdded);
    mirror->submitCustomDictionaryEntry(QStringLiteral("Quorla"), std::nullopt, false);
    ASSERT_TRUE(added.wait(5000));
    mirror->submitCustomDictionaryEntry(QStringLiteral("Quorla"), std::nullopt, false);
    ASSERT_TRUE(waitFor([&] { return mirror->statusMessage().contains(QStringLiteral("already")); }));
    EXPECT_EQ(added.count(), 1);
    EXPECT_EQ(model.customDictionaryEntries().size(), 1);

    const QList<CustomDictionaryEntry> entries = mirror->customDictionaryEntries();
    ASSERT_EQ(entries.size(), 1);
    mirror->removeCustomDictionaryEntry(entries.first());
    ASSERT_TRUE(waitFor([&] { return mirror->customDictionaryEntries().isEmpty(); }));
    EXPECT_TRUE(model.customDictionaryEntries().isEmpty());

    mirror->openSettingsPane(QStringLiteral("Privacy_Microphone"));
    ASSERT_TRUE(waitFor([&] { return !fixture.workspace->openedPanes.isEmpty(); }));
    EXPECT_EQ(fixture.workspace->openedPanes, QStringList({"Privacy_Microphone"}));
}

// What an unreadable or foreign frame does to each side: the link ends, nothing else.
struct BadFrameCase {
    const char *name;
    QByteArray body;
};

QByteArray writeOf(const char *name, const QVariant &value)
{
    return WindowLink::frame(WindowLink::Message::write, QByteArray(name), value);
}

TEST_F(WindowModelLink, anUnreadableFrameFromTheWindowEndsTheLinkAndChangesNothing)
{
    const BadFrameCase cases[] = {
        {"unknown kind", QByteArray(1, char(99))},
        {"truncated write", writeOf("polishPrompt", QStringLiteral("x")).left(6)},
        {"unknown property", writeOf("noSuchThing", true)},
        {"read-only property", writeOf("isRecording", true)},
        {"a message only Quorla sends", WindowLink::frame(WindowLink::Message::properties, WindowLink::PropertyValues())},
        {"unknown request", WindowLink::frame(WindowLink::Message::request, quint8(200), QVariantList())},
    };
    mirror.reset();
    host.reset();
    for (const auto &badFrame : cases) {
        SCOPED_TRACE(badFrame.name);
        fixture.makeModel();
        auto [hostEnd, windowEnd] = socketPair();
        WindowModelHost badHost(fixture.model(), hostEnd);
        WindowLink::send(*windowEnd, badFrame.body);
        windowEnd->flush();
        EXPECT_TRUE(waitFor([&] { return !badHost.isConnected(); }));
        EXPECT_FALSE(fixture.model().isRecording());
        EXPECT_TRUE(fixture.model().polishPrompt().isEmpty());
        delete windowEnd;
    }
}

TEST_F(WindowModelLink, theWindowLetsGoWhenQuorlaGoesOrSpeaksNonsense)
{
    QSignalSpy lost(mirror.get(), &RemoteWindowModel::linkLost);
    host.reset();
    EXPECT_TRUE(lost.wait(5000));

    auto [hostEnd, windowEnd] = socketPair();
    RemoteWindowModel confused(windowEnd);
    QSignalSpy confusedLost(&confused, &RemoteWindowModel::linkLost);
    WindowLink::send(*hostEnd, WindowLink::frame(WindowLink::Message::request, quint8(1), QVariantList()));
    hostEnd->flush();
    EXPECT_TRUE(confusedLost.wait(5000));
    EXPECT_FALSE(confused.isReady());
    delete hostEnd;
}

} // namespace
