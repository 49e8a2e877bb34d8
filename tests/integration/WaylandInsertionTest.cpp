#include "FakeAccessibility.h"
#include "TextTarget.h"

#include "models/QuorlaError.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/linux/AtSpiWorkspace.h"
#include "platform/linux/wayland/WaylandClipboard.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"
#include "services/TextInsertionService.h"

#include <QProcess>
#include <QTimer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const ClipboardFormats userCopy = {
    {"text/plain", "before"}, {"text/html", "<b>before</b>"}, {"application/x-quorla-binary", QByteArray("\x00\x01\xff\x00z", 5)}};

// The user copies as soon as the target has read the paste, before the clipboard goes back.
class CopyingAfterPaste : public KeySynthesizer
{
public:
    CopyingAfterPaste(std::shared_ptr<KeySynthesizer> keys, std::function<void()> copyOncePasted)
        : keys(std::move(keys))
    {
        QObject::connect(&poll, &QTimer::timeout, std::move(copyOncePasted));
    }
    bool sendBackspace() override { return keys->sendBackspace(); }
    bool sendPasteShortcut(PasteShortcut shortcut) override { return keys->sendPasteShortcut(shortcut) && (poll.start(5), true); }
    bool isAnyModifierPressed() override { return false; }

    std::shared_ptr<KeySynthesizer> keys;
    QTimer poll;
};

// Native Wayland windows on the headless sway beside the X11 desktop; the accessibility bus is shared.
class WaylandInsertionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (display.isEmpty())
            GTEST_SKIP() << "no headless sway (QUORLA_TEST_WAYLAND_DISPLAY)";
        ASSERT_TRUE(QCoro::waitFor(accessibility->requestTrust())) << "the accessibility bus is off or unreachable";
        ASSERT_TRUE(clipboard && keys && user) << "sway offers data control and virtual keyboards";
        environment.insert("WAYLAND_DISPLAY", display);
        environment.insert("QT_QPA_PLATFORM", "wayland");
        environment.insert("GDK_BACKEND", "wayland");
        environment.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        environment.remove("DISPLAY");
    }

    ApplicationHandlePtr launch(const QString &toolkit, const QString &initial)
    {
        if (toolkit == QLatin1String("gtk"))
            target.emplace(workspace, "/usr/bin/python3", QStringList{QUORLA_GTK_TARGET, output, initial}, environment);
        else
            target.emplace(workspace, QUORLA_TEXT_TARGET, QStringList{toolkit, output, initial}, environment);
        ApplicationHandlePtr application = target->application();
        return application && waitUntil([&] { return accessibility->focusedElement(application->processIdentifier()) != nullptr; })
                 ? application
                 : nullptr;
    }

    std::optional<QuorlaError> insert(TextInsertionService &service, const ApplicationHandlePtr &application, const QString &text)
    {
        std::optional<QuorlaError> error;
        // Built outside the coroutine: g++ 12 destroys a temporary in a co_await expression twice.
        QCoro::Task<void> inserting = service.insert(text, TextInsertionTarget{application}, true, true);
        QCoro::waitFor([&]() -> QCoro::Task<void> {
            try {
                co_await std::move(inserting);
            } catch (const QuorlaError &e) {
                error = e;
            }
        }());
        return error;
    }

    // What another client reads from the clipboard.
    QByteArray pasted(const QString &type)
    {
        QProcess paste;
        paste.setProcessEnvironment(environment);
        paste.start("wl-paste", {"--no-newline", "--type", type});
        if (!waitUntil([&] { return paste.state() == QProcess::NotRunning; }, 5000))
            paste.kill();
        return paste.readAllStandardOutput();
    }

    bool outputBecomes(const QString &expected)
    {
        return waitUntil([&] { return fileContents(output) == expected.toUtf8(); }, 5000);
    }

    const QString display = qEnvironmentVariable("QUORLA_TEST_WAYLAND_DISPLAY");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QTemporaryDir directory;
    QString output = directory.filePath("field.txt");
    std::shared_ptr<AtSpiAccessibility> accessibility = std::make_shared<AtSpiAccessibility>();
    AtSpiWorkspace workspace{nullptr};
    std::shared_ptr<WaylandConnection> connection = WaylandConnection::open(display.toUtf8());
    std::shared_ptr<WaylandClipboard> clipboard = WaylandClipboard::create(connection);
    std::shared_ptr<VirtualKeyboardKeySynthesizer> keys = VirtualKeyboardKeySynthesizer::create(connection);
    // Another client's clipboard: the user copying.
    std::shared_ptr<WaylandClipboard> user = WaylandClipboard::create(WaylandConnection::open(display.toUtf8()));
    // A longer wait before the clipboard goes back: a loaded CI machine may read a paste late.
    TextInsertionTimings timings{.clipboardRestoreDelay = std::chrono::milliseconds{600}};
    std::optional<TextTarget> target;
};

// Qt Quick's field takes no text through AT-SPI and is pasted into; the others are typed into.
TEST_F(WaylandInsertionTest, theFocusedApplicationIsFoundAndTypedIntoInEachToolkit)
{
    TextInsertionService service(accessibility, keys, clipboard, timings);
    for (const QString toolkit : {"widgets", "quick", "gtk"}) {
        SCOPED_TRACE(toolkit.toStdString());
        const ApplicationHandlePtr application = launch(toolkit, "hello ");
        ASSERT_TRUE(application);
        EXPECT_EQ(insert(service, application, "wörld"), std::nullopt);
        EXPECT_TRUE(outputBecomes("hellowörld")) << fileContents(output).toStdString();
    }
}

TEST_F(WaylandInsertionTest, pastesAndPutsEveryFormatBackUnlessTheUserCopiedMeanwhile)
{
    // No field is offered through accessibility: the paste route.
    auto noField = std::make_shared<FakeAccessibility>();
    const struct {
        const char *toolkit;
        bool copyMeanwhile;
    } cases[] = {{"widgets", false}, {"gtk", false}, {"gtk", true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.toolkit) + (c.copyMeanwhile ? " copied meanwhile" : ""));
        ASSERT_TRUE(user->write(Clipboard::Selection::clipboard, userCopy));
        bool copied = false;
        auto copying = std::make_shared<CopyingAfterPaste>(keys, [&] {
            if (c.copyMeanwhile && !copied && fileContents(output).contains("wörld"))
                copied = user->writeText(Clipboard::Selection::clipboard, "copied meanwhile", false);
        });
        TextInsertionService service(noField, copying, clipboard, timings);
        const ApplicationHandlePtr application = launch(c.toolkit, "hello ");
        ASSERT_TRUE(application);
        EXPECT_EQ(insert(service, application, "wörld"), std::nullopt);
        EXPECT_TRUE(outputBecomes("hello wörld")) << fileContents(output).toStdString();
        if (c.copyMeanwhile) {
            EXPECT_EQ(pasted("text/plain"), "copied meanwhile");
            continue;
        }
        for (const auto &[type, bytes] : userCopy)
            EXPECT_EQ(pasted(type), bytes) << type.toStdString();
    }
}

} // namespace
