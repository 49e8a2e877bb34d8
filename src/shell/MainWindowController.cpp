#include "MainWindowController.h"

#include "app/AppModel.h"
#include "views/icons/SymbolImageProvider.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QPixmapCache>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

// The interface module is linked statically; this keeps its plugin in the binary.
Q_IMPORT_QML_PLUGIN(Quorla_ViewsPlugin)

Q_LOGGING_CATEGORY(lcWindow, "quorla.window")

MainWindowController::MainWindowController(AppModel &model, QObject *parent)
    : QObject(parent)
    , m_model(model)
{
    // Fusion draws with the palette the window hands it, light or dark.
    if (QQuickStyle::name().isEmpty())
        QQuickStyle::setStyle(QStringLiteral("Fusion"));
    // A few static pages need no GPU. The software scene graph keeps a GL driver out of
    // Quorla (Mesa's costs about 100 MB resident and doubles the time to the first frame).
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

MainWindowController::~MainWindowController() = default;

void MainWindowController::show()
{
    if (!m_engine)
        build();
    if (!m_window)
        return;
    if (m_window->visibility() == QWindow::Minimized)
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void MainWindowController::close()
{
    if (m_window)
        m_window->close();
}

void MainWindowController::build()
{
    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_engine->addImportPath(QStringLiteral("qrc:/"));
    m_engine->addImageProvider(QStringLiteral("symbol"), new SymbolImageProvider);
    m_engine->setInitialProperties({{QStringLiteral("appModel"), QVariant::fromValue<QObject *>(&m_model)}});
    m_engine->load(QUrl(QStringLiteral("qrc:/Quorla/Views/Main.qml")));
    const auto roots = m_engine->rootObjects();
    m_window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(roots.first());
    if (!m_window) {
        qCWarning(lcWindow) << "the main window could not be built";
        m_engine.reset();
        return;
    }
    // A closed window is hidden; it is released after the close has run its course,
    // never inside it.
    connect(m_window.data(), &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            QMetaObject::invokeMethod(this, &MainWindowController::release, Qt::QueuedConnection);
    });
}

void MainWindowController::release()
{
    if (!m_engine || (m_window && m_window->isVisible()))
        return;
    m_window = nullptr;
    m_engine.reset();
    // What the scene handed over for later deletion goes now, before the heap is trimmed.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // The scene's icons and symbols, drawn at the window's sizes; drawn again when it opens.
    QPixmapCache::clear();
#ifdef __GLIBC__
    // Give the scene's freed heap back to the system, not just to the allocator.
    malloc_trim(0);
#endif
    Q_EMIT windowReleased();
}
