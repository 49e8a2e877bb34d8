#include "DictationCommandLines.h"

#include <QClipboard>
#include <QGuiApplication>

QVariantList DictationCommandLines::bindings()
{
    const auto binding = [](const QString &desktop, const QString &lines) {
        return QVariantMap{{QStringLiteral("desktop"), desktop}, {QStringLiteral("lines"), lines}};
    };
    return {
        binding(QStringLiteral("Commands"),
                QStringLiteral("quorla dictation start\nquorla dictation stop\nquorla dictation toggle\n"
                               "quorla dictation cancel\nquorla dictation status")),
        // sway and Hyprland run a command on release too: hold the key to talk.
        binding(QStringLiteral("sway (hold to talk; replace $key)"),
                QStringLiteral("bindsym --no-repeat $key exec quorla dictation start\n"
                               "bindsym --release $key exec quorla dictation stop")),
        binding(QStringLiteral("Hyprland (hold to talk; replace KEY)"),
                QStringLiteral("bind = , KEY, exec, quorla dictation start\n"
                               "bindr = , KEY, exec, quorla dictation stop")),
        // Their custom shortcuts fire on press only: one press starts, the next one finishes.
        binding(QStringLiteral("GNOME or KDE custom shortcut (press to start, press again to finish)"),
                QStringLiteral("quorla dictation toggle")),
    };
}

void DictationCommandLines::copy(const QString &text) const
{
    QGuiApplication::clipboard()->setText(text);
}
