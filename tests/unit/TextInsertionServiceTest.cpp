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
    std::shared_ptr<FakeApplication> editor = std::make_shared<FakeApplication>(42, QStringLiteral("Editor"));
    TextInsertionService service{accessibility, keys,
                                 TextInsertionTimings{milliseconds{0}, milliseconds{0}, milliseconds{0},
                                                      milliseconds{0}, milliseconds{20}}};
    QString clipboardAtPaste;
};

TEST_F(TextInsertionServiceTest, theDirectRouteReplacesTheTriggerSpaceAndPutsTheCaretAfterTheText)
{
    accessibility->focused = textField(QStringLiteral("hello "), TextRange{6, 0});
    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(accessibility->focused->edits,
              QStringList({QStringLiteral("value:helloworld"), QStringLiteral("selection:10,0")}));
    EXPECT_EQ(accessibility->queriedProcesses, QList<qint64>{42});
    EXPECT_EQ(editor->activationCount, 1);
    EXPECT_TRUE(keys->sent.isEmpty());
    EXPECT_TRUE(clipboard()->text().isEmpty()) << "the direct route leaves the clipboard alone";
}

TEST_F(TextInsertionServiceTest, theDirectRouteReplacesTheSelectionCountingUtf16Units)
{
    const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80");
    accessibility->focused = textField(grin + QStringLiteral(" old tail"), TextRange{3, 3});
    EXPECT_EQ(insert(grin + QStringLiteral("new"), true, false), std::nullopt);
    EXPECT_EQ(accessibility->focused->value, grin + QStringLiteral(" ") + grin + QStringLiteral("new tail"));
    EXPECT_EQ(accessibility->focused->selection, (TextRange{8, 0}));
}

TEST_F(TextInsertionServiceTest, fieldsThatRefuseDirectEditingTakeThePasteRoute)
{
    struct Case {
        const char *name;
        std::function<void(FakeTextField &)> arrange;
        QStringList keys;
    };
    const Case cases[] = {
        {"valueNotSettable", [](FakeTextField &f) { f.valueSettable = false; },
         {QStringLiteral("BackSpace"), QStringLiteral("Ctrl+V")}},
        {"selectionNotSettable", [](FakeTextField &f) { f.selectionSettable = false; },
         {QStringLiteral("BackSpace"), QStringLiteral("Ctrl+V")}},
        {"setValueRefused", [](FakeTextField &f) { f.acceptsValue = false; },
         {QStringLiteral("BackSpace"), QStringLiteral("Ctrl+V")}},
        // the trigger-space test looks only before the selection, so the space still goes
        {"selectionBeyondTheValue", [](FakeTextField &f) { f.selection = TextRange{6, 4}; },
         {QStringLiteral("BackSpace"), QStringLiteral("Ctrl+V")}},
        {"noValue", [](FakeTextField &f) { f.value.reset(); }, {QStringLiteral("Ctrl+V")}},
        {"noSelection", [](FakeTextField &f) { f.selection.reset(); }, {QStringLiteral("Ctrl+V")}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        keys->sent.clear();
        clipboardAtPaste.clear();
        accessibility->focused = textField(QStringLiteral("hello "), TextRange{6, 0});
        c.arrange(*accessibility->focused);
        EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
        EXPECT_EQ(keys->sent, c.keys);
        EXPECT_EQ(clipboardAtPaste, QStringLiteral("world"));
        EXPECT_TRUE(accessibility->focused->edits.isEmpty());
    }
}

TEST_F(TextInsertionServiceTest, theTriggerSpaceIsDeletedOnlyWhenTheDirectRouteSawIt)
{
    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+V")}) << "no focused element";

    keys->sent.clear();
    accessibility->focused = textField(QStringLiteral("hello "), TextRange{6, 0}, false);
    EXPECT_EQ(insert(QStringLiteral("world"), true, false), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+V")}) << "not asked to replace it";

    keys->sent.clear();
    accessibility->focused->value = QStringLiteral("hello");
    accessibility->focused->selection = TextRange{5, 0};
    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+V")}) << "no space before the caret";
}

TEST_F(TextInsertionServiceTest, refusalsBeforeAnythingIsTouched)
{
    accessibility->trusted = false;
    EXPECT_EQ(insert(QStringLiteral("x")), QuorlaError(QuorlaError::Kind::accessibilityPermissionDenied));
    EXPECT_EQ(editor->activationCount, 0);

    accessibility->trusted = true;
    editor->pid = 0;
    EXPECT_EQ(insert(QStringLiteral("x")),
              QuorlaError::textInsertionFailed(QStringLiteral("The target app is no longer running.")));
    EXPECT_EQ(editor->activationCount, 0);

    editor->pid = 42;
    editor->activates = false;
    EXPECT_EQ(insert(QStringLiteral("x")),
              QuorlaError::textInsertionFailed(QStringLiteral("Couldn't bring Editor back to the front.")));
    editor->name.reset();
    EXPECT_EQ(insert(QStringLiteral("x")),
              QuorlaError::textInsertionFailed(QStringLiteral("Couldn't bring the target app back to the front.")));
    EXPECT_TRUE(keys->sent.isEmpty());
    EXPECT_TRUE(accessibility->queriedProcesses.isEmpty());
}

TEST_F(TextInsertionServiceTest, thePreviousClipboardComesBackByteForByte)
{
    const QList<std::pair<QString, QByteArray>> previous = {
        {QStringLiteral("text/plain"), QByteArrayLiteral("before")},
        {QStringLiteral("text/html"), QByteArrayLiteral("<b>before</b>")},
        {QStringLiteral("application/x-quorla-binary"), QByteArray("\x00\x01\xff\x00z", 5)},
    };
    putOnClipboard(previous);
    const PasteboardSnapshot before = PasteboardSnapshot::capture(*clipboard());
    ASSERT_EQ(before.formats.size(), 3);

    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(clipboardAtPaste, QStringLiteral("world"));
    EXPECT_EQ(PasteboardSnapshot::capture(*clipboard()), before);
}

TEST_F(TextInsertionServiceTest, theTranscriptCarriesThePasswordManagerHint)
{
    QByteArray hint;
    keys->onPaste = [&hint] { hint = clipboard()->mimeData()->data(QStringLiteral("x-kde-passwordManagerHint")); };
    EXPECT_EQ(insert(QStringLiteral("world"), false), std::nullopt);
    EXPECT_EQ(hint, "secret");
    EXPECT_EQ(clipboard()->text(), QStringLiteral("world")) << "not restored: the transcript stays";
}

TEST_F(TextInsertionServiceTest, aClipboardChangedDuringThePasteIsKept)
{
    putOnClipboard({{QStringLiteral("text/plain"), QByteArrayLiteral("before")}});
    keys->onPaste = [] { clipboard()->setText(QStringLiteral("copied meanwhile")); };
    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(clipboard()->text(), QStringLiteral("copied meanwhile"));
}

TEST_F(TextInsertionServiceTest, anEmptyClipboardIsRestoredEmpty)
{
    EXPECT_EQ(insert(QStringLiteral("world")), std::nullopt);
    EXPECT_EQ(clipboardAtPaste, QStringLiteral("world"));
    EXPECT_TRUE(PasteboardSnapshot::capture(*clipboard()).formats.isEmpty());
}

TEST_F(TextInsertionServiceTest, failedKeysLeaveTheTranscriptOnTheClipboard)
{
    putOnClipboard({{QStringLiteral("text/plain"), QByteArrayLiteral("before")}});
    accessibility->focused = textField(QStringLiteral("hello "), TextRange{6, 0}, false);
    keys->backspaceWorks = false;
    EXPECT_EQ(insert(QStringLiteral("world")),
              QuorlaError::textInsertionFailed(QStringLiteral("Couldn't remove the trigger space before pasting.")));
    EXPECT_EQ(clipboard()->text(), QStringLiteral("world"));

    keys->backspaceWorks = true;
    keys->pasteWorks = false;
    EXPECT_EQ(insert(QStringLiteral("again")),
              QuorlaError::textInsertionFailed(QStringLiteral("Couldn't synthesize the paste shortcut.")));
    EXPECT_EQ(clipboard()->text(), QStringLiteral("again"));
}

TEST_F(TextInsertionServiceTest, terminalsGetControlShiftV)
{
    accessibility->focused = std::make_shared<FakeTextField>();
    accessibility->focused->terminal = true;
    EXPECT_EQ(insert(QStringLiteral("ls")), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+Shift+V")}) << "by accessibility role";

    keys->sent.clear();
    accessibility->focused.reset();
    editor->terminal = true;
    EXPECT_EQ(insert(QStringLiteral("ls")), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+Shift+V")}) << "by window class";
}

TEST_F(TextInsertionServiceTest, keysWaitForHeldModifiersButNotForever)
{
    keys->modifiersHeldForQueries = 3;
    EXPECT_EQ(insert(QStringLiteral("a")), std::nullopt);
    EXPECT_EQ(keys->modifierQueries, 4);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+V")});

    keys->sent.clear();
    keys->modifiersHeldForQueries = 1'000'000; // a stuck key
    EXPECT_EQ(insert(QStringLiteral("a")), std::nullopt);
    EXPECT_EQ(keys->sent, QStringList{QStringLiteral("Ctrl+V")});
}

} // namespace
