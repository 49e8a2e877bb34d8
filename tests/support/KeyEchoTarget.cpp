// A target application for keyboard tests: one line edit that prints every key it
// receives, with the monotonic time it arrived, so tests and benchmarks can tell
// which keys reached the focused application and how late.
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <chrono>
#include <cstdio>

namespace {

long long monotonicMicroseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

class EchoLineEdit : public QLineEdit
{
protected:
    // Before QLineEdit's own handling, which keeps some keys (Menu) from keyPressEvent.
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress)
            report("press", static_cast<QKeyEvent *>(event));
        else if (event->type() == QEvent::KeyRelease)
            report("release", static_cast<QKeyEvent *>(event));
        return QLineEdit::event(event);
    }
    void focusInEvent(QFocusEvent *event) override
    {
        std::printf("focus\n");
        std::fflush(stdout);
        QLineEdit::focusInEvent(event);
    }

private:
    static void report(const char *what, const QKeyEvent *event)
    {
        std::printf("%s %d %d %lld\n", what, event->key(), event->isAutoRepeat() ? 1 : 0, monotonicMicroseconds());
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    EchoLineEdit edit;
    edit.setWindowTitle(QStringLiteral("Key echo"));
    edit.resize(320, 40);
    // A context menu would take the keyboard and hide the keys that follow.
    edit.setContextMenuPolicy(Qt::NoContextMenu);
    edit.show();
    edit.activateWindow();
    return QApplication::exec();
}
