#include "FakeAccessibility.h"
#include "FakeKeySynthesizer.h"
#include "FakeWorkspace.h"
#include "TaskResult.h"

#include "platform/QtClipboard.h"
#include "services/TextInsertionService.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

std::optional<QuorlaError> failed(const char *message)
{
    return QuorlaError::textInsertionFailed(message);
}

class TextInsertionServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        clipboard->clear();
        keys->onPaste = [this] { clipboardAtPaste = clipboard->text(); };
    }

    std::optional<QuorlaError> insert(const QString &text, bool restoreClipboard = true, bool replaceSpace = true)
    {
        return quorlaErrorOf(service.insert(text, TextInsertionTarget{editor}, restoreClipboard, replaceSpace));
    }

    FakeTextField &focus(const QString &value, TextRange selection)
    {
        accessibility->focused = std::make_shared<FakeTextField>();
        accessibility->focused->value = value;
        accessibility->focused->selection = selection;
        return *accessibility->focused;
    }

    std::shared_ptr<FakeAccessibility> accessibility = std::make_shared<FakeAccessibility>();
    std::shared_ptr<FakeKeySynthesizer> keys = std::make_shared<FakeKeySynthesizer>();
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, "Editor");
    TextInsertionService service{accessibility, keys, std::make_shared<QtClipboard>(),
                                 TextInsertionTimings{milliseconds{0}, milliseconds{0}, milliseconds{0},
                                                      milliseconds{0}, milliseconds{20}}};
    QClipboard *const clipboard = QGuiApplication::clipboard();
    QString clipboardAtPaste;
};

TEST_F(TextInsertionServiceTest, theDirectRouteReplacesTheTriggerSpaceAndPutsTheCaretAfterTheText)
{
    focus("hello ", TextRange{6, 0});
    EXPECT_EQ(insert("world"), std::nullopt);
    EXPECT_EQ(accessibility->focused->edits, QStringList({"replace:5,1:world", "selection:10,0"}));
    EXPECT_EQ(editor->activationCount, 1);
    EXPECT_TRUE(keys->sent.isEmpty());

    focus("😀 old tail", TextRange{3, 3}); // offsets count UTF-16 units
    editor->frontmost = true;             // the user never left it: not activated again
    EXPECT_EQ(insert("😀new", true, false), std::nullopt);
    EXPECT_EQ(editor->activationCount, 1);
    EXPECT_EQ(accessibility->focused->value, "😀 😀new tail");
    EXPECT_EQ(accessibility->focused->selection, (TextRange{8, 0}));
}

TEST_F(TextInsertionServiceTest, fieldsThatRefuseDirectEditingTakeThePasteRoute)
{
    const struct {
        const char *name;
        std::function<void(FakeTextField &)> arrange;
        QStringList keys;
        bool replaceSpace = true;
    } cases[] = {
        {"value not settable", [](FakeTextField &f) { f.valueSettable = false; }, {"BackSpace", "Ctrl+V"}},
        {"selection not settable", [](FakeTextField &f) { f.selectionSettable = false; }, {"BackSpace", "Ctrl+V"}},
        {"value refused", [](FakeTextField &f) { f.acceptsValue = false; }, {"BackSpace", "Ctrl+V"}},
        // the trigger-space test looks only before the selection, so the space still goes
        {"selection beyond the value", [](FakeTextField &f) { f.selection = TextRange{6, 4}; }, {"BackSpace", "Ctrl+V"}},
        {"no value", [](FakeTextField &f) { f.value.reset(); }, {"Ctrl+V"}},
        {"not asked to replace the space", [](FakeTextField &f) { f.valueSettable = false; }, {"Ctrl+V"}, false},
        {"no space before", [](FakeTextField &f) { f.value = "hello"; f.selection = TextRange{5, 0}; f.valueSettable = false; }, {"Ctrl+V"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        keys->sent.clear();
        c.arrange(focus("hello ", TextRange{6, 0}));
        EXPECT_EQ(insert("world", true, c.replaceSpace), std::nullopt);
        EXPECT_EQ(keys->sent, c.keys);
        EXPECT_EQ(clipboardAtPaste, "world");
        EXPECT_TRUE(accessibility->focused->edits.isEmpty());
    }
    // Terminals paste with the keys they bind, known by their accessibility role (or, as
    // the xterm integration test shows, by their window class).
    accessibility->focused->terminal = true;
    keys->sent.clear();
    EXPECT_EQ(insert("ls", true, false), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList({"Ctrl+Shift+V"}));
}

TEST_F(TextInsertionServiceTest, refusalsBeforeAnythingIsTouched)
{
    accessibility->trusted = false;
    EXPECT_EQ(insert("x"), QuorlaError(QuorlaError::Kind::accessibilityPermissionDenied));
    accessibility->trusted = true;
    editor->pid = 0;
    EXPECT_EQ(insert("x"), failed("The target app is no longer running."));
    EXPECT_EQ(editor->activationCount, 0);
    editor->pid = 42;
    editor->activates = false;
    EXPECT_EQ(insert("x"), failed("Couldn't bring Editor back to the front."));
    editor->name.reset();
    EXPECT_EQ(insert("x"), failed("Couldn't bring the target app back to the front."));
    EXPECT_TRUE(keys->sent.isEmpty());
    EXPECT_TRUE(accessibility->queriedProcesses.isEmpty());
    // Keys the desktop will not let through (no consent): the clipboard stays the user's.
    editor->activates = true;
    keys->ready = false;
    clipboard->setText("before");
    EXPECT_EQ(insert("x"), failed("Couldn't synthesize the paste shortcut."));
    EXPECT_EQ(clipboard->text(), "before");
}

// When the clipboard is not restored, the transcript stays on it for the user. A full
// clipboard coming back byte for byte, and one copied meanwhile staying, are shown
// against real ones in integration.
TEST_F(TextInsertionServiceTest, theClipboardKeepsWhatTheUserMustNotLose)
{
    const struct {
        const char *name;
        bool restore, backspaceWorks, pasteWorks;
        std::optional<QuorlaError> error;
        QString clipboardAfter;
    } cases[] = {
        {"restored empty", true, true, true, std::nullopt, ""},
        {"not asked to restore", false, true, true, std::nullopt, "world"},
        {"Backspace failed", true, false, true, failed("Couldn't remove the trigger space before pasting."), "world"},
        {"paste failed", true, true, false, failed("Couldn't synthesize the paste shortcut."), "world"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        c.clipboardAfter.isEmpty() ? clipboard->setMimeData(new QMimeData) : clipboard->setText("before");
        focus("hello ", TextRange{6, 0}).valueSettable = false;
        keys->backspaceWorks = c.backspaceWorks;
        keys->pasteWorks = c.pasteWorks;
        QByteArray hint;
        keys->onPaste = [&] { hint = clipboard->mimeData()->data("x-kde-passwordManagerHint"); };
        EXPECT_EQ(insert("world", c.restore), c.error);
        EXPECT_EQ(clipboard->text(), c.clipboardAfter);
        if (c.pasteWorks && c.backspaceWorks) {
            EXPECT_EQ(hint, "secret") << "a password manager leaves the transcript alone";
        }
    }
}

} // namespace
