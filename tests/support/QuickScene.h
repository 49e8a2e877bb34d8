#pragma once

#include <QList>
#include <QQuickItem>
#include <QQuickWindow>

// Finds the objects of a running QML scene by object name: QObject children, visual
// children and, below a window, the popups in its overlay.
namespace QuickScene {

inline void collect(QObject *object, QList<QObject *> &out)
{
    if (!object || out.contains(object))
        return;
    out.append(object);
    for (QObject *child : object->children())
        collect(child, out);
    if (auto *item = qobject_cast<QQuickItem *>(object))
        for (QQuickItem *child : item->childItems())
            collect(child, out);
    if (auto *window = qobject_cast<QQuickWindow *>(object))
        collect(window->contentItem()->parentItem(), out);
}

inline QList<QObject *> everyObject(QObject *root)
{
    QList<QObject *> out;
    collect(root, out);
    return out;
}

// The first object with that name below root (root itself excluded), or null.
inline QObject *find(QObject *root, const QString &name)
{
    for (QObject *object : everyObject(root))
        if (object != root && object->objectName() == name)
            return object;
    return nullptr;
}

} // namespace QuickScene
