// A text field for the integration tests to type into: a Qt Widgets QLineEdit, a rich
// QTextEdit whose first character is bold (written out as *bold*), or a Qt Quick
// TextField. It writes its text to a file on every change and prints
// "ready" once its window is active with the field focused. The line edit also prints
// every key it receives, with the steady-clock microsecond it arrived, so tests and
// benchmarks can tell which keys reached the focused application and how late.
//
//   quorla_text_target widgets|rich|quick OUTPUT INITIAL-TEXT [--clipboard]
//
// --clipboard puts text, HTML and a binary type with NUL bytes on the clipboard first.

#include <QApplication>
#include <QKeyEvent>
#include <QClipboard>
#include <QLineEdit>
#include <QMimeData>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlPropertyMap>
#include <QQuickWindow>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextEdit>
#include <QTimer>
#include <chrono>
#include <cstdio>

static const char *quickField = R"(
import QtQuick
import QtQuick.Controls
Window {
    width: 400; height: 80; visible: true; title: "Quick target"
    TextField {
        anchors.fill: parent
        focus: true
        text: initialText
        Component.onCompleted: cursorPosition = text.length
        onTextChanged: probe.text = text
    }
}
)";

// Before QLineEdit's own handling, which keeps some keys (Menu) from keyPressEvent.
class KeyReporter : public QObject
{
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        const std::chrono::microseconds now = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
        std::printf("%s %d %lld\n", event->type() == QEvent::KeyPress ? "press" : "release", key->key(),
                    static_cast<long long>(now.count()));
        std::fflush(stdout);
        return false;
    }
};

// The field holds one paragraph.
static QString markedBold(const QTextDocument &document)
{
    QString marked;
    for (auto it = document.begin().begin(); !it.atEnd(); ++it)
        marked += it.fragment().charFormat().fontWeight() > QFont::Normal ? u'*' + it.fragment().text() + u'*'
                                                                          : it.fragment().text();
    return marked;
}

int main(int argc, char **argv)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QString initial = args.value(3);
    const auto textChanged = [output = args.value(2)](const QString &text) {
        QSaveFile file(output);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(text.toUtf8());
            file.commit();
        }
    };
    textChanged(initial);

    if (args.contains(QStringLiteral("--clipboard"))) {
        auto *data = new QMimeData;
        data->setText(QStringLiteral("before"));
        data->setHtml(QStringLiteral("<b>before</b>"));
        data->setData(QStringLiteral("application/x-quorla-binary"), QByteArray("\x00\x01\xff\x00z", 5));
        QGuiApplication::clipboard()->setMimeData(data);
    }

    QLineEdit lineEdit;
    QTextEdit textEdit;
    QQmlApplicationEngine engine;
    QQmlPropertyMap probe; // QML sets probe.text on every change
    KeyReporter keys;
    if (args.value(1) == QLatin1String("rich")) {
        textEdit.setPlainText(initial);
        QTextCursor first(textEdit.document());
        first.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        first.mergeCharFormat(bold);
        textEdit.moveCursor(QTextCursor::End);
        QObject::connect(&textEdit, &QTextEdit::textChanged, [&] { textChanged(markedBold(*textEdit.document())); });
        textEdit.show();
        textEdit.activateWindow();
    } else if (args.value(1) != QLatin1String("quick")) {
        lineEdit.installEventFilter(&keys);
        // A context menu would take the keyboard and hide the keys that follow.
        lineEdit.setContextMenuPolicy(Qt::NoContextMenu);
        lineEdit.setWindowTitle(QStringLiteral("Widgets target"));
        lineEdit.setText(initial);
        lineEdit.setCursorPosition(int(initial.size()));
        QObject::connect(&lineEdit, &QLineEdit::textChanged, textChanged);
        lineEdit.show();
        lineEdit.activateWindow();
    } else {
        QObject::connect(&probe, &QQmlPropertyMap::valueChanged,
                         [&](const QString &, const QVariant &text) { textChanged(text.toString()); });
        engine.rootContext()->setContextProperty(QStringLiteral("initialText"), initial);
        engine.rootContext()->setContextProperty(QStringLiteral("probe"), &probe);
        engine.loadData(quickField);
        if (engine.rootObjects().isEmpty())
            return 3;
    }

    QTimer readiness;
    QObject::connect(&readiness, &QTimer::timeout, [&] {
        QWindow *window = QGuiApplication::focusWindow();
        if (!window || !window->isActive())
            return;
        readiness.stop();
        std::printf("ready\n");
        std::fflush(stdout);
    });
    readiness.start(20);
    return app.exec();
}
