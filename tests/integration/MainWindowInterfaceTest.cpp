// The real window, as Quorla builds it, over a model with fakes at the seams: what each
// page shows of the model and what its controls write back.
#include "ModelFixture.h"
#include "QuickScene.h"

#include "shell/MainWindowController.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>
#include <ostream>

// A failure shows a property's value, not its bytes.
void PrintTo(const QVariant &value, std::ostream *out)
{
    *out << value.toString().toStdString();
}

namespace {

class MainWindowInterface : public ::testing::Test
{
protected:
    // Opens the window over the model; false when it did not appear.
    bool open(AppModel &model)
    {
        m_controller = std::make_unique<MainWindowController>(model);
        m_controller->show();
        return window() && QTest::qWaitForWindowExposed(window()) && (QTest::qWait(300), true);
    }
    QQuickWindow *window() const { return m_controller->window(); }
    QObject *find(const char *name, QObject *below = nullptr) const
    {
        return QuickScene::find(below ? below : window(), QString::fromLatin1(name));
    }
    // A property of a named object; invalid when there is no such object.
    QVariant read(const char *name, const char *property = "text", QObject *below = nullptr) const
    {
        QObject *object = find(name, below);
        return object ? object->property(property) : QVariant();
    }

    void click(QObject *object)
    {
        auto *item = qobject_cast<QQuickItem *>(object);
        ASSERT_NE(item, nullptr);
        const QPointF center = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(window(), Qt::LeftButton, {}, center.toPoint());
        QTest::qWait(20);
    }
    // Focuses the control, then types the text or presses the key.
    void type(QObject *control, const QString &text, Qt::Key key = Qt::Key_unknown)
    {
        QMetaObject::invokeMethod(control, "forceActiveFocus");
        for (const QChar c : text)
            QTest::keyClick(window(), c.toLatin1());
        if (key != Qt::Key_unknown)
            QTest::keyClick(window(), key);
        QTest::qWait(20);
    }
    void selectSection(const char *key)
    {
        if (QObject *frame = find("mainWindowPresenter"))
            frame->setProperty("selectedSection", QString::fromLatin1(key));
        QTest::qWait(50);
    }

    ModelFixture fixture;
    std::unique_ptr<MainWindowController> m_controller;
};

// Each page over one model: what it shows of the model and what its controls write back.
TEST_F(MainWindowInterface, thePagesShowTheModelAndTheirControlsWriteIt)
{
    fixture.audio->permission = PermissionState::denied;
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(open(model));
    EXPECT_EQ(read("permissionRow0", "statusText"), QStringLiteral("Needs attention"));

    // Every visible control has an accessible name.
    const QSet<QAccessible::Role> controls{QAccessible::Button, QAccessible::CheckBox, QAccessible::EditableText,
                                           QAccessible::ComboBox, QAccessible::PageTab, QAccessible::RadioButton};
    for (const char *section : {"home", "dictionary", "settings"}) {
        selectSection(section);
        int checked = 0;
        for (QObject *object : QuickScene::everyObject(window())) {
            auto *item = qobject_cast<QQuickItem *>(object);
            // A combo box's own text field is named through the combo box.
            if (!item || !item->isVisible() || !item->window() || !item->parentItem()
                || item->parentItem()->inherits("QQuickComboBox"))
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

    fixture.audio->permission = PermissionState::authorized;
    fixture.accessibility->trusted = true;
    model.refreshPermissions(false);
    QTest::qWait(50);
    EXPECT_EQ(read("statusPill", "text", find("permissionRow0")), QStringLiteral("Ready"));
    EXPECT_TRUE(read("onboardingSheet", "visible").toBool());

    // The row's button reaches the desktop's settings place.
    click(find("actionButton", find("permissionRow1")));
    EXPECT_EQ(fixture.workspace->openedPanes, QStringList{QStringLiteral("Privacy_ListenEvent")});
    click(find("closeOnboardingButton"));
    QTest::qWait(300);
    EXPECT_FALSE(read("onboardingSheet", "visible").toBool());

    // The dictionary's Add needs a term, and a replacement once the switch is on.
    selectSection("dictionary");
    QObject *term = find("termField");
    QObject *replacement = find("replacementField");
    QObject *add = find("addTermButton");
    ASSERT_TRUE(term && replacement && add);
    EXPECT_FALSE(add->property("enabled").toBool());
    EXPECT_FALSE(replacement->property("visible").toBool());
    EXPECT_EQ(read("dictionarySummaryPill"), QStringLiteral("0 saved"));

    type(term, QStringLiteral("kwor la"));
    EXPECT_TRUE(add->property("enabled").toBool());
    click(find("useReplacementSwitch"));
    EXPECT_TRUE(replacement->property("visible").toBool());
    EXPECT_FALSE(add->property("enabled").toBool()) << "switch on, no replacement";
    type(replacement, QStringLiteral("Quorla"));
    EXPECT_TRUE(add->property("enabled").toBool());

    // Taken: the model and the list have it, and the fields are empty for the next one.
    click(add);
    ASSERT_EQ(model.customDictionaryEntries().size(), 1);
    EXPECT_EQ(model.customDictionaryEntries().first().replacement, QStringLiteral("Quorla"));
    EXPECT_EQ(read("dictionarySummaryPill"), QStringLiteral("1 saved"));
    EXPECT_EQ(term->property("text").toString() + replacement->property("text").toString(), QString());

    // Every setting is written at once.
    selectSection("settings");
    ASSERT_FALSE(model.showMenuBarIcon());
    click(find("trayIconSwitch"));
    EXPECT_TRUE(model.showMenuBarIcon());

    // The pickers answer the keyboard like any combo box.
    const QString trigger = model.triggerKey();
    type(find("triggerPicker"), QString(), Qt::Key_Down);
    EXPECT_NE(model.triggerKey(), trigger);

    // The instructions can be edited only while polishing is on.
    ASSERT_FALSE(model.shouldPolishTranscript());
    EXPECT_FALSE(read("polishPromptField", "enabled").toBool());
    click(find("polishSwitch"));
    ASSERT_TRUE(read("polishPromptField", "enabled").toBool());
    type(find("polishPromptField"), QStringLiteral("Keep it short"));
    EXPECT_EQ(model.polishPrompt(), QStringLiteral("Keep it short"));
    type(find("serviceAddressField"), QStringLiteral("api.example.com"));
    EXPECT_EQ(model.serviceAddress(), QStringLiteral("api.example.com"));

    // The key, below the fold: saved with Return in its field, removed from the keyboard.
    QObject *page = find("settingsPage");
    EXPECT_FALSE(read("removeKeyButton", "enabled", page).toBool());
    type(find("apiKeyField", page), QStringLiteral("sk-proj-settings"), Qt::Key_Return);
    EXPECT_TRUE(model.hasStoredAPIKey());
    EXPECT_EQ(read("sidebarSetupRow"), QStringLiteral("Setup complete"));
    ASSERT_TRUE(read("removeKeyButton", "enabled", page).toBool());
    type(find("removeKeyButton", page), QString(), Qt::Key_Space);
    EXPECT_FALSE(model.hasStoredAPIKey());
}

} // namespace
