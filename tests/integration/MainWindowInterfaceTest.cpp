#include "ModelFixture.h"
#include "QuickScene.h"
#include "XTestKeyboard.h"

#include "app/MainWindowController.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// A combo box's own text field is named through the combo box.
bool isInsideComboBox(QQuickItem *item)
{
    for (QQuickItem *parent = item->parentItem(); parent; parent = parent->parentItem())
        if (parent->inherits("QQuickComboBox"))
            return true;
    return false;
}

// The real QML window over a model with fakes at the seams.
class MainWindowInterface : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("DISPLAY"))
            GTEST_SKIP() << "needs the headless desktop";
    }

    QQuickWindow *open(AppModel &model)
    {
        m_controller = std::make_unique<MainWindowController>(model);
        m_controller->show();
        QQuickWindow *window = m_controller->window();
        EXPECT_NE(window, nullptr);
        if (window) {
            EXPECT_TRUE(QTest::qWaitForWindowExposed(window));
        }
        return window;
    }

    QList<QObject *> scene() const { return QuickScene::everyObject(m_controller->window()); }
    QObject *find(const QString &name) const { return QuickScene::find(m_controller->window(), name); }
    static QObject *findIn(QObject *root, const QString &name) { return QuickScene::find(root, name); }

    void click(QObject *object)
    {
        auto *item = qobject_cast<QQuickItem *>(object);
        ASSERT_NE(item, nullptr);
        const QPointF center = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(m_controller->window(), Qt::LeftButton, {}, center.toPoint());
        QTest::qWait(20);
    }

    void type(QObject *field, const QString &text)
    {
        QMetaObject::invokeMethod(field, "forceActiveFocus");
        for (const QChar c : text)
            QTest::keyClick(m_controller->window(), c.toLatin1());
        QTest::qWait(20);
    }

    void selectSection(const char *key)
    {
        QObject *frame = find(QStringLiteral("mainWindowPresenter"));
        ASSERT_NE(frame, nullptr);
        frame->setProperty("selectedSection", QString::fromLatin1(key));
        QTest::qWait(50);
    }

    void dismissOnboarding()
    {
        if (QObject *sheet = find(QStringLiteral("onboardingSheet")); sheet && sheet->property("visible").toBool()) {
            QMetaObject::invokeMethod(sheet, "close");
            QTest::qWait(300);
        }
    }

    ModelFixture fixture;
    std::unique_ptr<MainWindowController> m_controller;
};

TEST_F(MainWindowInterface, grantingAPermissionTurnsItsRowReadyWhileTheSheetIsOpen)
{
    fixture.audio->permission = PermissionState::denied;
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    QTest::qWait(300);

    QObject *sheet = find(QStringLiteral("onboardingSheet"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->property("visible").toBool());
    QObject *microphone = find(QStringLiteral("permissionRow0"));
    ASSERT_NE(microphone, nullptr);
    EXPECT_EQ(microphone->property("statusText").toString(), QStringLiteral("Needs attention"));
    EXPECT_TRUE(findIn(microphone, QStringLiteral("actionButton"))->property("highlighted").toBool());
    QObject *accessibility = find(QStringLiteral("permissionRow2"));
    ASSERT_NE(accessibility, nullptr);
    EXPECT_EQ(accessibility->property("statusText").toString(), QStringLiteral("Insert off"));

    fixture.audio->permission = PermissionState::authorized;
    fixture.accessibility->trusted = true;
    model.refreshPermissions(false);
    QTest::qWait(50);

    microphone = find(QStringLiteral("permissionRow0"));
    ASSERT_NE(microphone, nullptr);
    EXPECT_EQ(findIn(microphone, QStringLiteral("statusPill"))->property("text").toString(), QStringLiteral("Ready"));
    EXPECT_FALSE(findIn(microphone, QStringLiteral("actionButton"))->property("highlighted").toBool());
    EXPECT_EQ(find(QStringLiteral("permissionRow2"))->property("statusText").toString(), QStringLiteral("Ready"));
    EXPECT_TRUE(sheet->property("visible").toBool());

    // The row's button reaches the desktop's settings place.
    click(findIn(find(QStringLiteral("permissionRow1")), QStringLiteral("actionButton")));
    EXPECT_EQ(fixture.workspace->openedPanes, QStringList{QStringLiteral("Privacy_ListenEvent")});

    // Closed with its own button, the sheet comes back from the pinned sidebar row.
    click(find(QStringLiteral("closeOnboardingButton")));
    QTest::qWait(300);
    EXPECT_FALSE(sheet->property("visible").toBool());
    click(find(QStringLiteral("sidebarSetupRow")));
    QTest::qWait(300);
    EXPECT_TRUE(sheet->property("visible").toBool());
}

TEST_F(MainWindowInterface, onboardingStaysHiddenWhenSetupIsComplete)
{
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-proj-test"));
    model.saveAPIKey();
    if (model.requiresOnboarding())
        GTEST_SKIP() << "saving the key is not available in this build";
    ASSERT_TRUE(open(model));
    QTest::qWait(300);
    QObject *sheet = find(QStringLiteral("onboardingSheet"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_FALSE(sheet->property("visible").toBool());
    EXPECT_EQ(find(QStringLiteral("sidebarSetupRow"))->property("text").toString(), QStringLiteral("Setup complete"));
}

TEST_F(MainWindowInterface, dictionaryAddNeedsTheReplacementAndARefusedAddKeepsTheFields)
{
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    dismissOnboarding();
    selectSection("dictionary");

    QObject *term = find(QStringLiteral("termField"));
    QObject *replacement = find(QStringLiteral("replacementField"));
    QObject *add = find(QStringLiteral("addTermButton"));
    ASSERT_TRUE(term && replacement && add);
    EXPECT_FALSE(add->property("enabled").toBool());
    EXPECT_FALSE(replacement->property("visible").toBool());
    EXPECT_EQ(find(QStringLiteral("dictionarySummaryPill"))->property("text").toString(), QStringLiteral("0 saved"));

    type(term, QStringLiteral("kwor la"));
    EXPECT_TRUE(add->property("enabled").toBool());
    click(find(QStringLiteral("useReplacementSwitch")));
    EXPECT_TRUE(replacement->property("visible").toBool());
    EXPECT_FALSE(add->property("enabled").toBool()) << "switch on, no replacement";
    type(replacement, QStringLiteral("Quorla"));
    EXPECT_TRUE(add->property("enabled").toBool());

    click(add);
    if (term->property("text").toString().isEmpty()) {
        // Taken: the list shows it; the same term again is refused.
        EXPECT_EQ(find(QStringLiteral("dictionarySummaryPill"))->property("text").toString(),
                  QStringLiteral("1 saved"));
        type(term, QStringLiteral("kwor la"));
        type(replacement, QStringLiteral("Quorla"));
        click(add);
    }
    EXPECT_EQ(term->property("text").toString(), QStringLiteral("kwor la"));
    EXPECT_EQ(replacement->property("text").toString(), QStringLiteral("Quorla"));
}

TEST_F(MainWindowInterface, everySettingIsWrittenAtOnce)
{
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    dismissOnboarding();
    selectSection("settings");

    ASSERT_FALSE(model.showMenuBarIcon());
    click(find(QStringLiteral("trayIconSwitch")));
    EXPECT_TRUE(model.showMenuBarIcon());
    ASSERT_TRUE(model.autoCopyTranscript());
    click(find(QStringLiteral("autoCopySwitch")));
    EXPECT_FALSE(model.autoCopyTranscript());

    // The pickers answer the keyboard like any combo box.
    const QString trigger = model.triggerKey();
    type(find(QStringLiteral("triggerPicker")), QString());
    QTest::keyClick(m_controller->window(), Qt::Key_Down);
    EXPECT_NE(model.triggerKey(), trigger);
    type(find(QStringLiteral("transcriptionModePicker")), QString());
    QTest::keyClick(m_controller->window(), Qt::Key_Down);
    EXPECT_EQ(model.transcriptionMode(), TranscriptionMode::moreAccurate);

    // The instructions can be edited only while polishing is on.
    QObject *instructions = find(QStringLiteral("polishPromptField"));
    ASSERT_NE(instructions, nullptr);
    const bool polishing = model.shouldPolishTranscript();
    EXPECT_EQ(instructions->property("enabled").toBool(), polishing);
    if (!polishing)
        click(find(QStringLiteral("polishSwitch")));
    ASSERT_TRUE(model.shouldPolishTranscript());
    ASSERT_TRUE(instructions->property("enabled").toBool());
    type(instructions, QStringLiteral("Keep it short"));
    EXPECT_EQ(model.polishPrompt(), QStringLiteral("Keep it short"));

    // A typed service address is checked as it is typed.
    QObject *message = find(QStringLiteral("serviceAddressMessage"));
    ASSERT_NE(message, nullptr);
    EXPECT_FALSE(message->property("visible").toBool());
    type(find(QStringLiteral("serviceAddressField")), QStringLiteral("api.example.com"));
    EXPECT_TRUE(message->property("visible").toBool());
    EXPECT_TRUE(message->property("text").toString().startsWith(QLatin1String("Enter an address")));

    // The key, below the fold: saved with Return in its field, removed from the keyboard.
    QObject *page = find(QStringLiteral("settingsPage"));
    QObject *remove = findIn(page, QStringLiteral("removeKeyButton"));
    ASSERT_NE(remove, nullptr);
    EXPECT_FALSE(remove->property("enabled").toBool());
    type(findIn(page, QStringLiteral("apiKeyField")), QStringLiteral("sk-proj-settings"));
    QTest::keyClick(m_controller->window(), Qt::Key_Return);
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(findIn(page, QStringLiteral("keyStatusPill"))->property("text").toString(), QStringLiteral("Saved"));
    EXPECT_TRUE(remove->property("enabled").toBool());
    type(remove, QString());
    QTest::keyClick(m_controller->window(), Qt::Key_Space);
    EXPECT_FALSE(model.hasStoredAPIKey());

    QObject *summary = find(QStringLiteral("translationSummary"));
    ASSERT_NE(summary, nullptr);
    model.setTranslationLanguageCode(QStringLiteral("fr"));
    QTest::qWait(20);
    EXPECT_TRUE(summary->property("text").toString().contains(QLatin1String("French")));
    EXPECT_EQ(find(QStringLiteral("translationPicker"))->property("currentText").toString(), QStringLiteral("French"));
}

TEST_F(MainWindowInterface, everyVisibleControlHasAnAccessibleName)
{
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    QTest::qWait(300);
    const QSet<QAccessible::Role> controls{QAccessible::Button, QAccessible::CheckBox, QAccessible::EditableText,
                                           QAccessible::ComboBox, QAccessible::PageTab, QAccessible::RadioButton};
    for (const char *section : {"home", "dictionary", "settings"}) {
        selectSection(section);
        int checked = 0;
        for (QObject *object : scene()) {
            auto *item = qobject_cast<QQuickItem *>(object);
            if (!item || !item->isVisible() || !item->window() || isInsideComboBox(item))
                continue;
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(item);
            if (!accessible || !controls.contains(accessible->role()) || accessible->state().invisible)
                continue;
            ++checked;
            // Qt 6.4 reports no name for a password field: it must carry a description.
            const auto text = accessible->state().passwordEdit ? QAccessible::Description : QAccessible::Name;
            EXPECT_FALSE(accessible->text(text).isEmpty())
                << section << ": " << item->metaObject()->className() << " " << item->objectName().toStdString();
        }
        EXPECT_GT(checked, 3) << section;
    }
}

// Closed by Quorla, or with Ctrl+W while the modal setup sheet is open.
TEST_F(MainWindowInterface, closingReleasesTheSceneAndShowBuildsItAgain)
{
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(model.requiresOnboarding());
    ASSERT_TRUE(open(model));
    // Pixmaps drawn from the icon are cached under its identity: a new icon per
    // window would leave a new set behind at every close.
    const qint64 icon = m_controller->window()->icon().cacheKey();
    for (const bool withKeyboard : {false, true}) {
        SCOPED_TRACE(withKeyboard ? "Ctrl+W over the setup sheet" : "closed by Quorla");
        QSignalSpy released(m_controller.get(), &MainWindowController::windowReleased);
        if (withKeyboard) {
            ASSERT_TRUE(QTest::qWaitForWindowActive(m_controller->window())); // shortcuts go to the active window
            QTest::qWait(300);
            ASSERT_TRUE(find(QStringLiteral("onboardingSheet"))->property("opened").toBool());
            XTestKeyboard keyboard; // through the X server: shortcuts as a user's keys reach them
            ASSERT_TRUE(keyboard.isOpen());
            keyboard.press("Control_L");
            keyboard.press("w");
            keyboard.release("w");
            keyboard.release("Control_L");
        } else {
            m_controller->close();
        }
        ASSERT_TRUE(released.wait(2000));
        EXPECT_FALSE(m_controller->isOpen());
        EXPECT_EQ(m_controller->window(), nullptr);

        m_controller->show();
        ASSERT_NE(m_controller->window(), nullptr);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(m_controller->window()));
        EXPECT_EQ(m_controller->window()->title(), QStringLiteral("Quorla"));
        EXPECT_EQ(m_controller->window()->icon().cacheKey(), icon);
    }
}

TEST_F(MainWindowInterface, homeShowsUsageAndEmptyHistory)
{
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    EXPECT_EQ(findIn(find(QStringLiteral("timeSavedMetric")), QStringLiteral("metricValue"))->property("text"),
              QStringLiteral("0 sec"));
    EXPECT_TRUE(find(QStringLiteral("noUsageText"))->property("visible").toBool());
    EXPECT_TRUE(find(QStringLiteral("emptyHistoryText"))->property("visible").toBool());
    EXPECT_EQ(find(QStringLiteral("historySummaryPill"))->property("text").toString(), QStringLiteral("0 saved"));
    EXPECT_EQ(find(QStringLiteral("pushToTalkHelp"))->property("text").toString(),
              QStringLiteral("Hold Fn to record, or press Fn + Space to start and stop."));
    EXPECT_FALSE(find(QStringLiteral("clearHistoryButton"))->property("enabled").toBool());
}

} // namespace
