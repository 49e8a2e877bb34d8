// What the toolkit alone costs, for comparison with bench_startup_footprint: a Qt Quick
// Controls window drawn as Quorla draws its own (Fusion, software scene graph), a tray
// icon with a menu and one HTTPS request, and nothing of Quorla. Resident memory with
// the window open, and 10 s after it was closed and its scene released.
#include "ResidentMemory.h"

#include <QApplication>
#include <QMenu>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPixmap>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSystemTrayIcon>
#include <QTimer>
#include <cstdio>
#include <memory>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr char window[] = R"(
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
ApplicationWindow {
    width: 860; height: 600; visible: true; title: "Toolkit"
    RowLayout {
        anchors.fill: parent
        ListView {
            Layout.preferredWidth: 200; Layout.fillHeight: true
            model: ["Home", "Dictionary", "Settings"]
            delegate: ItemDelegate { width: 200; text: modelData }
        }
        ColumnLayout {
            Label { text: "Words dictated"; font.bold: true }
            TextField { placeholderText: "Term" }
            Switch { text: "Polish the transcript" }
            ComboBox { model: ["Original language", "English", "French"] }
            Button { text: "Save" }
            Repeater { model: 5; delegate: Label { text: "A recent transcript " + index } }
        }
    }
}
)";

} // namespace

int main(int argc, char *argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    QMenu menu;
    menu.addAction(QStringLiteral("Open"));
    menu.addAction(QStringLiteral("Quit"));
    QPixmap picture(22, 22);
    picture.fill(Qt::darkRed);
    QSystemTrayIcon tray{QIcon(picture)};
    tray.setContextMenu(&menu);
    tray.show();

    // Connection refused, but TLS is set up for it, as for a release check.
    QNetworkAccessManager network;
    QNetworkReply *reply = network.get(QNetworkRequest(QUrl(QStringLiteral("https://127.0.0.1:9/"))));
    QObject::connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);

    auto engine = std::make_unique<QQmlApplicationEngine>();
    engine->loadData(window);
    if (engine->rootObjects().isEmpty())
        return 1;
    QTimer::singleShot(2000, &app, [&] {
        std::printf("resident with the window open: %s\n", residentMemory().constData());
        qobject_cast<QQuickWindow *>(engine->rootObjects().first())->close();
        QTimer::singleShot(0, &app, [&] {
            engine.reset();
#ifdef __GLIBC__
            malloc_trim(0);
#endif
        });
        QTimer::singleShot(10000, &app, [] {
            std::printf("resident 10 s after closing: %s\n", residentMemory().constData());
            QApplication::quit();
        });
    });
    return QApplication::exec();
}
