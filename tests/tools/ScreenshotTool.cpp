// Renders every page and sheet of the main window, light and dark, to PNG files for
// review. The window runs over a model with fakes at the seams, like the interface tests.
#include "ModelFixture.h"

#include "app/MainWindowController.h"

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>
#include <QTest>
#include <cstdio>

namespace {

void collect(QObject *object, QSet<QObject *> &seen, QList<QObject *> &out)
{
    if (!object || seen.contains(object))
        return;
    seen.insert(object);
    out.append(object);
    for (QObject *child : object->children())
        collect(child, seen, out);
    if (auto *item = qobject_cast<QQuickItem *>(object))
        for (QQuickItem *child : item->childItems())
            collect(child, seen, out);
}

QList<QObject *> named(QQuickWindow *window, const QString &name)
{
    QSet<QObject *> seen;
    QList<QObject *> all;
    collect(window, seen, all);
    collect(window->contentItem()->parentItem(), seen, all);
    QList<QObject *> found;
    for (QObject *object : all)
        if (object->objectName() == name)
            found.append(object);
    return found;
}

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

bool save(QQuickWindow *window, const QDir &directory, const QString &name)
{
    QTest::qWait(250);
    const QString path = directory.filePath(name + QStringLiteral(".png"));
    const bool saved = window->grabWindow().save(path);
    std::printf("%s %s\n", saved ? "wrote" : "FAILED", qPrintable(path));
    return saved;
}

bool renderScheme(const QDir &directory, const QString &scheme)
{
    ModelFixture fixture;
    fixture.audio->permission = PermissionState::notDetermined;
    fixture.accessibility->trusted = false;
    AppModel &model = fixture.makeModel();
    model.setShouldPolishTranscript(true);
    model.setPolishPrompt(QStringLiteral("Keep my British spelling."));
    model.setTranslationLanguageCode(QStringLiteral("de"));
    model.addCustomDictionaryEntry(QStringLiteral("Quorla"), std::nullopt, false);
    model.addCustomDictionaryEntry(QStringLiteral("kwor la"), QStringLiteral("Quorla"), true);

    MainWindowController controller(model);
    controller.show();
    QQuickWindow *window = controller.window();
    if (!window || !QTest::qWaitForWindowExposed(window))
        return false;
    QObject *frame = named(window, QStringLiteral("mainWindowPresenter")).value(0);
    if (!frame)
        return false;

    bool ok = save(window, directory, scheme + QStringLiteral("-onboarding"));
    // The key help sheet over the onboarding sheet (the Settings page has the same one).
    if (QObject *help = named(window, QStringLiteral("keyHelpSheet")).value(0)) {
        QMetaObject::invokeMethod(help, "open");
        ok = save(window, directory, scheme + QStringLiteral("-keyhelp")) && ok;
        QMetaObject::invokeMethod(help, "close");
    }
    QMetaObject::invokeMethod(frame, "dismissOnboarding");
    for (const char *section : {"home", "dictionary", "settings"}) {
        frame->setProperty("selectedSection", QString::fromLatin1(section));
        ok = save(window, directory, scheme + QLatin1Char('-') + QLatin1String(section)) && ok;
    }
    // The Settings page is taller than the window: its lower half too.
    if (QObject *page = named(window, QStringLiteral("settingsPage")).value(0)) {
        auto *flickable = page->property("contentItem").value<QObject *>();
        if (flickable) {
            const qreal bottom = flickable->property("contentHeight").toReal() - flickable->property("height").toReal();
            flickable->setProperty("contentY", std::max<qreal>(0, bottom));
            ok = save(window, directory, scheme + QStringLiteral("-settings-lower")) && ok;
        }
    }
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QDir directory(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    QDir().mkpath(directory.path());

    const QPalette light = QGuiApplication::palette();
    bool ok = renderScheme(directory, QStringLiteral("light"));
    QGuiApplication::setPalette(darkPalette());
    ok = renderScheme(directory, QStringLiteral("dark")) && ok;
    QGuiApplication::setPalette(light);
    return ok ? 0 : 1;
}
