#pragma once

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// The Settings section "Use another key or a command": the `quorla dictation` commands
// and lines to paste into common desktops' key bindings, each copied with one click.
// For desktops where Quorla cannot see the trigger key, and for true push-to-talk
// where the compositor runs a command on key release.
class DictationCommandLines : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    // [{desktop, lines}]: lines is the text to paste, one binding per line.
    Q_PROPERTY(QVariantList bindings READ bindings CONSTANT)

public:
    using QObject::QObject;

    [[nodiscard]] static QVariantList bindings();
    // Puts the text on the clipboard.
    Q_INVOKABLE void copy(const QString &text) const;
};
