#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QQuickWindow;

// Finds the objects of a running QML scene by object name: QObject children, visual
// children and the popups in the window's overlay.
namespace QuickScene {

QList<QObject *> everyObject(QObject *root);
QList<QObject *> everyObject(QQuickWindow *window);
// The first object with that name below root (root itself excluded), or null.
QObject *find(QObject *root, const QString &name);
QObject *find(QQuickWindow *window, const QString &name);

} // namespace QuickScene
