#include "QuickScene.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

namespace QuickScene {

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

QObject *named(const QList<QObject *> &objects, const QObject *except, const QString &name)
{
    for (QObject *object : objects)
        if (object != except && object->objectName() == name)
            return object;
    return nullptr;
}

} // namespace

QList<QObject *> everyObject(QObject *root)
{
    QSet<QObject *> seen;
    QList<QObject *> out;
    collect(root, seen, out);
    return out;
}

QList<QObject *> everyObject(QQuickWindow *window)
{
    QSet<QObject *> seen;
    QList<QObject *> out;
    collect(window, seen, out);
    // Popups live under the overlay, beside the content item.
    if (window)
        collect(window->contentItem()->parentItem(), seen, out);
    return out;
}

QObject *find(QObject *root, const QString &name)
{
    return named(everyObject(root), root, name);
}

QObject *find(QQuickWindow *window, const QString &name)
{
    return named(everyObject(window), window, name);
}

} // namespace QuickScene
