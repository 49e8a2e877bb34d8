#include "FakeAccessibility.h"
#include "FakeKeySynthesizer.h"
#include "FakeWorkspace.h"

#include "models/QuorlaError.h"
#include "services/PasteboardSnapshot.h"
#include "services/TextInsertionService.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

QCoro::Task<void> catching(QCoro::Task<void> task, std::optional<QuorlaError> *error)
{
    try {
        co_await std::move(task);
    } catch (const QuorlaError &e) {
        *error = e;
    }
}

std::shared_ptr<FakeTextField> textField(const QString &value, TextRange selection, bool valueSettable = true)
{
    auto field = std::make_shared<FakeTextField>();
    field->value = value;
    field->selection = selection;
    field->valueSettable = valueSettable;
    return field;
}

class TextInsertionServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        clipboard()->clear();
        keys->onPaste = [this] { clipboardAtPaste = clipboard()->text(); };
    }

    static QClipboard *clipboard() { return QGuiApplication::clipboard(); }

    std::optional<QuorlaError> insert(const QString &text, bool restoreClipboard = true,
                                      bool replaceTriggerSpace = true)
    {
        std::optional<QuorlaError> error;
        QCoro::waitFor(catching(service.insert(text, TextInsertionTarget{editor}, restoreClipboard,
                                               replaceTriggerSpace),
                                &error));
        return error;
    }

    static void putOnClipboard(const QList<std::pair<QString, QByteArray>> &formats)
    {
        auto *data = new QMimeData;
        for (const auto &[format, bytes] : formats)
            data->setData(format, bytes);
        clipboard()->setMimeData(data);
    }

    std::shared_ptr<FakeAccessibility> accessibility = std::make_shared<FakeAccessibility>();
    std::shared_ptr<FakeKeySynthesizer> keys = std::make_shared<FakeKeySynthesizer>();
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, "Editor");
    TextInsertionService service{accessibility, keys,
                                 TextInsertionTimings{milliseconds{0}, milliseconds{0}, milliseconds{0},
                                                      milliseconds{0}, milliseconds{20}}};
    QString clipboardAtPaste;
};

TEST_F(TextInsertionServiceTest, theDirectRouteReplacesTheTriggerSpaceAndPutsTheCaretAfterTheText)
{
    accessibility->focused = textField("hello ", TextRange{6, 0});
    EXPECT_EQ(insert("world"), std::nullopt);
    EXPECT_EQ(accessibility->focused->edits, QStringList({"value:helloworld", "selection:10,0"}));
    EXPECT_EQ(accessibility->queriedProcesses, QList<qint64>{42});
    EXPECT_EQ(editor->activationCount, 1);
    EXPECT_TRUE(keys->sent.isEmpty());
    EXPECT_TRUE(clipboard()->text().isEmpty()) << "the direct route leaves the clipboard alone";

    accessibility->focused = textField("😀 old tail", TextRange{3, 3}); // offsets count UTF-16 units
    EXPECT_EQ(insert("😀new", true, false), std::nullopt);
    EXPECT_EQ(accessibility->focused->value, "😀 😀new tail");
    EXPECT_EQ(accessibility->focused->selection, (TextRange{8, 0}));
}

TEST_F(TextInsertionServiceTest, fieldsThatRefuseDirectEditingTakeThePasteRoute)
{
    struct Case {
        const char *name;
        std::function<void(FakeTextField &)> arrange;
        QStringList keys;
        bool replaceTriggerSpace = true;
    };
    const Case cases[] = {
        {"valueNotSettable", [](FakeTextField &f) { f.valueSettable = false; }, {"BackSpace", "Ctrl+V"}},
        {"selectionNotSettable", [](FakeTextField &f) { f.selectionSettable = false; }, {"BackSpace", "Ctrl+V"}},
        {"setValueRefused", [](FakeTextField &f) { f.acceptsValue = false; }, {"BackSpace", "Ctrl+V"}},
        // the trigger-space test looks only before the selection, so the space still goes
        {"selectionBeyondTheValue", [](FakeTextField &f) { f.selection = TextRange{6, 4}; }, {"BackSpace", "Ctrl+V"}},
        {"noValue", [](FakeTextField &f) { f.value.reset(); }, {"Ctrl+V"}},
        {"noSelection", [](FakeTextField &f) { f.selection.reset(); }, {"Ctrl+V"}},
        {"notAskedToReplaceTheSpace", [](FakeTextField &f) { f.valueSettable = false; }, {"Ctrl+V"}, false},
        {"noSpaceBeforeTheCaret",
         [](FakeTextField &f) { f.value = "hello"; f.selection = TextRange{5, 0}; f.valueSettable = false; },
         {"Ctrl+V"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        keys->sent.clear();
        clipboardAtPaste.clear();
        accessibility->focused = textField("hello ", TextRange{6, 0});
        c.arrange(*accessibility->focused);
        EXPECT_EQ(insert("world", true, c.replaceTriggerSpace), std::nullopt);
        EXPECT_EQ(keys->sent, c.keys);
        EXPECT_EQ(clipboardAtPaste, "world");
        EXPECT_TRUE(accessibility->focused->edits.isEmpty());
    }
}

TEST_F(TextInsertionServiceTest, refusalsBeforeAnythingIsTouched)
{
    accessibility->trusted = false;
    EXPECT_EQ(insert("x"), QuorlaError(QuorlaError::Kind::accessibilityPermissionDenied));
    EXPECT_EQ(editor->activationCount, 0);

    accessibility->trusted = true;
    editor->pid = 0;
    EXPECT_EQ(insert("x"),
              QuorlaError::textInsertionFailed("The target app is no longer running."));
    EXPECT_EQ(editor->activationCount, 0);

    editor->pid = 42;
    editor->activates = false;
    EXPECT_EQ(insert("x"),
              QuorlaError::textInsertionFailed("Couldn't bring Editor back to the front."));
    editor->name.reset();
    EXPECT_EQ(insert("x"),
              QuorlaError::textInsertionFailed("Couldn't bring the target app back to the front."));
    EXPECT_TRUE(keys->sent.isEmpty());
    EXPECT_TRUE(accessibility->queriedProcesses.isEmpty());
}

TEST_F(TextInsertionServiceTest, thePreviousClipboardComesBackByteForByteEvenWhenEmpty)
{
    for (const qsizetype formats : {3, 0}) {
        putOnClipboard(QList<std::pair<QString, QByteArray>>{
            {"text/plain", "before"}, {"text/html", "<b>before</b>"},
            {"application/x-quorla-binary", QByteArray("\x00\x01\xff\x00z", 5)},
        }.first(formats));
        const PasteboardSnapshot before = PasteboardSnapshot::capture(*clipboard());
        ASSERT_EQ(before.formats.size(), formats);
        EXPECT_EQ(insert("world"), std::nullopt);
        EXPECT_EQ(clipboardAtPaste, "world");
        EXPECT_EQ(PasteboardSnapshot::capture(*clipboard()), before);
    }
}

// When the clipboard is not restored, the transcript stays on it for the user.
TEST_F(TextInsertionServiceTest, theClipboardKeepsWhatTheUserMustNotLose)
{
    const struct {
        const char *name;
        bool restore, backspaceWorks, pasteWorks;
        const char *copiedDuringPaste;
        std::optional<QString> error;
        QString clipboardAfter;
    } cases[] = {
        {"not asked to restore", false, true, true, nullptr, std::nullopt, "world"},
        {"copied meanwhile", true, true, true, "copied meanwhile", std::nullopt, "copied meanwhile"},
        {"Backspace failed", true, false, true, nullptr, "Couldn't remove the trigger space before pasting.", "world"},
        {"paste failed", true, true, false, nullptr, "Couldn't synthesize the paste shortcut.", "world"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        putOnClipboard({{"text/plain", QByteArray("before")}});
        accessibility->focused = textField("hello ", TextRange{6, 0}, false);
        keys->backspaceWorks = c.backspaceWorks;
        keys->pasteWorks = c.pasteWorks;
        QByteArray hint;
        keys->onPaste = [&] {
            hint = clipboard()->mimeData()->data("x-kde-passwordManagerHint");
            if (c.copiedDuringPaste)
                clipboard()->setText(c.copiedDuringPaste);
        };
        const auto error = insert("world", c.restore);
        EXPECT_EQ(error, c.error ? std::optional(QuorlaError::textInsertionFailed(*c.error)) : std::nullopt);
        EXPECT_EQ(clipboard()->text(), c.clipboardAfter);
        if (c.pasteWorks && c.backspaceWorks)
            EXPECT_EQ(hint, "secret") << "a password manager leaves the transcript alone";
    }
}

TEST_F(TextInsertionServiceTest, terminalsGetControlShiftV)
{
    accessibility->focused = std::make_shared<FakeTextField>();
    accessibility->focused->terminal = true;
    EXPECT_EQ(insert("ls"), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{"Ctrl+Shift+V"}) << "by accessibility role";

    keys->sent.clear();
    accessibility->focused.reset();
    editor->terminal = true;
    EXPECT_EQ(insert("ls"), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{"Ctrl+Shift+V"}) << "by window class";
}

} // namespace
