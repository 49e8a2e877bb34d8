#include "MainWindowController.h"

#include "AppInfo.h"
#include "app/WindowModel.h"
#include "views/icons/SymbolImageProvider.h"

#include <QIcon>
#include <QLoggingCategory>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

// The interface module is linked statically; this keeps its plugin in the binary.
Q_IMPORT_QML_PLUGIN(Quorla_ViewsPlugin)

Q_LOGGING_CATEGORY(lcWindow, "quorla.window")

MainWindowController::MainWindowController(WindowModel &model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_icon(QIcon::fromTheme(QStringLiteral(QUORLA_APP_ID), QIcon(QStringLiteral(":/Quorla/app-icon.svg"))))
{
    // Fusion draws with the palette the window hands it, light or dark.
    if (QQuickStyle::name().isEmpty())
        QQuickStyle::setStyle(QStringLiteral("Fusion"));
    // A few static pages need no GPU. The software scene graph keeps a GL driver out of
    // the window's process (Mesa's costs about 100 MB resident and doubles the time to
    // the first frame).
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
    m_window->setIcon(m_icon);
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
    Q_EMIT windowReleased();
}
