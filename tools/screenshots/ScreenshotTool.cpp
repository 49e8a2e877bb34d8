// Renders every page and sheet of the main window, and the tray menu, light and dark,
// to PNG files for review. The window runs over a model with fakes at the seams, like
// the interface tests, with the texts and the trigger a Linux user sees.
#include "ModelFixture.h"
#include "QuickScene.h"

#include "shell/MainWindowController.h"
#include "shell/TrayIcon.h"
#include "support/PlatformWords.h"

#include <QApplication>
#include <QCoro/QCoroTask>
#include <QDir>
#include <QPalette>
#include <QQuickWindow>
#include <QTest>
#include <cstdio>

namespace {

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(0x2b, 0x2c, 0x30), base(0x1f, 0x20, 0x24), text(0xec, 0xee, 0xf2);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(0x38, 0x3a, 0x40));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0x8a, 0x8f, 0x99));
    palette.setColor(QPalette::Highlight, QColor(0x8c, 0x9e, 0xff));
    palette.setColor(QPalette::HighlightedText, QColor(0x10, 0x12, 0x18));
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    return palette;
}

class Renderer
{
public:
    Renderer(const QDir &directory, QString scheme)
        : m_directory(directory)
        , m_scheme(std::move(scheme))
    {
    }

    bool save(const QImage &image, const QString &name)
    {
        const QString path = m_directory.filePath(m_scheme + QLatin1Char('-') + name + QStringLiteral(".png"));
        const bool saved = image.save(path);
        std::printf("%s %s\n", saved ? "wrote" : "FAILED", qPrintable(path));
        m_ok = m_ok && saved;
        return saved;
    }
    void save(QQuickWindow *window, const QString &name)
    {
        QTest::qWait(250);
        save(window->grabWindow(), name);
    }
    [[nodiscard]] bool ok() const { return m_ok; }

private:
    QDir m_directory;
    QString m_scheme;
    bool m_ok = true;
};

void prepare(ModelFixture &fixture)
{
    fixture.words = &PlatformWords::linuxDesktop();
    fixture.keyboard->triggerName = QStringLiteral("Right Ctrl");
    fixture.audio->permission = PermissionState::notDetermined;
    fixture.accessibility->trusted = false;
}

// A first launch: the setup sheet, its key help, and every page.
void renderFirstLaunch(Renderer &out)
{
    ModelFixture fixture;
    prepare(fixture);
    AppModel &model = fixture.makeModel();
    model.setShouldPolishTranscript(true);
    model.setPolishPrompt(QStringLiteral("Keep my British spelling."));
    model.setTranslationLanguageCode(QStringLiteral("de"));
    model.addCustomDictionaryEntry(QStringLiteral("Quorla"), std::nullopt, false);
    model.addCustomDictionaryEntry(QStringLiteral("kwor la"), QStringLiteral("Quorla"), true);

    MainWindowController controller(model);
    controller.show();
    QQuickWindow *window = controller.window();
    QObject *frame = window ? QuickScene::find(window, QStringLiteral("mainWindowPresenter")) : nullptr;
    if (!frame || !QTest::qWaitForWindowExposed(window)) {
        out.save(QImage(), QStringLiteral("window"));
        return;
    }

    out.save(window, QStringLiteral("onboarding"));
    if (QObject *help = QuickScene::find(window, QStringLiteral("keyHelpSheet"))) {
        QMetaObject::invokeMethod(help, "open");
        out.save(window, QStringLiteral("keyhelp"));
        QMetaObject::invokeMethod(help, "close");
    }
    QMetaObject::invokeMethod(frame, "dismissOnboarding");
    for (const char *section : {"home", "dictionary", "settings"}) {
        frame->setProperty("selectedSection", QString::fromLatin1(section));
        out.save(window, QString::fromLatin1(section));
    }
    // The Settings page is taller than the window: its lower half too.
    QObject *page = QuickScene::find(window, QStringLiteral("settingsPage"));
    if (auto *flickable = page ? page->property("contentItem").value<QObject *>() : nullptr) {
        const qreal bottom = flickable->property("contentHeight").toReal() - flickable->property("height").toReal();
        flickable->setProperty("contentY", std::max<qreal>(0, bottom));
        out.save(window, QStringLiteral("settings-lower"));
    }
}

// Set up and in use: a stored key, granted permissions, a few dictations behind it.
void renderInUse(Renderer &out)
{
    ModelFixture fixture;
    prepare(fixture);
    fixture.audio->permission = PermissionState::authorized;
    fixture.accessibility->trusted = true;
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-proj-screenshot"));
    model.saveAPIKey();
    model.setShowMenuBarIcon(true);
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, QStringLiteral("Text Editor"));
    const struct {
        int hour, minute;
        const char *text;
    } dictations[] = {
        {9, 5, "Let's move the design review to Thursday at ten."},
        {9, 41, "Thanks for the quick turnaround on the invoice, it all looks right to me."},
        {10, 12, "Pick up oat milk and coffee beans."},
    };
    for (const auto &dictation : dictations) {
        fixture.now = QDateTime(fixture.now.date(), QTime(dictation.hour, dictation.minute), Qt::UTC);
        fixture.speech->transcript = QString::fromUtf8(dictation.text);
        QCoro::waitFor(model.globalPressToTalkBegan());
        QCoro::waitFor(model.globalPressToTalkEnded());
    }

    MainWindowController controller(model);
    controller.show();
    QQuickWindow *window = controller.window();
    if (!window || !QTest::qWaitForWindowExposed(window)) {
        out.save(QImage(), QStringLiteral("window"));
        return;
    }
    out.save(window, QStringLiteral("home-in-use"));

    TrayIcon tray(model);
    out.save(tray.menu().grab().toImage(), QStringLiteral("tray-menu"));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QDir directory(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    QDir().mkpath(directory.path());

    const QPalette light = QApplication::palette();
    bool ok = true;
    for (const QString &scheme : {QStringLiteral("light"), QStringLiteral("dark")}) {
        QApplication::setPalette(scheme == u"dark" ? darkPalette() : light);
        Renderer out(directory, scheme);
        renderFirstLaunch(out);
        renderInUse(out);
        ok = ok && out.ok();
    }
    return ok ? 0 : 1;
}
