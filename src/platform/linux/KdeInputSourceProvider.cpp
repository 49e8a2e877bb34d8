#include "KdeInputSourceProvider.h"

#include "XkbLayoutRegistry.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString service = QStringLiteral("org.kde.keyboard");
const QString path = QStringLiteral("/Layouts");
const QString interface = QStringLiteral("org.kde.KeyboardLayouts");

struct LayoutNames {
    QString shortName; // "de"
    QString longName;  // "German (no dead keys)"
};

// getLayoutsList's a(sss): short name, display name, long name.
QList<LayoutNames> layoutsOf(const QDBusMessage &reply)
{
    QList<LayoutNames> layouts;
    if (reply.arguments().isEmpty())
        return layouts;
    const auto list = reply.arguments().constFirst().value<QDBusArgument>();
    if (list.currentType() != QDBusArgument::ArrayType)
        return layouts;
    list.beginArray();
    while (!list.atEnd()) {
        QString shortName, displayName, longName;
        list.beginStructure();
        list >> shortName >> displayName >> longName;
        list.endStructure();
        layouts.append({shortName, longName});
    }
    list.endArray();
    return layouts;
}

InputSourceInfo sourceOf(const LayoutNames &layout)
{
    InputSourceInfo source;
    source.localizedName = layout.longName.isEmpty() ? layout.shortName : layout.longName;
    const XkbLayoutRegistry &registry = XkbLayoutRegistry::system();
    const auto named = registry.layoutNamed(layout.longName).value_or(std::pair(layout.shortName, QString()));
    const auto &[name, variant] = named;
    source.identifier = QStringLiteral("xkb:") + name + (variant.isEmpty() ? QString() : QLatin1Char(':') + variant);
    source.languages = registry.describe(name, variant).value_or(XkbLayoutDescription{}).languages;
    return source;
}

} // namespace

KdeInputSourceProvider::KdeInputSourceProvider(QDBusConnection bus)
    : m_bus(std::move(bus))
{
    for (const char *signal : {"layoutChanged", "layoutListChanged"})
        m_bus.connect(service, path, interface, QString::fromLatin1(signal), this, SLOT(refresh()));
    refresh();
}

void KdeInputSourceProvider::startObservingChanges(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
}

QDBusPendingCall KdeInputSourceProvider::call(const QString &method)
{
    return m_bus.asyncCall(QDBusMessage::createMethodCall(service, path, interface, method));
}

void KdeInputSourceProvider::refresh()
{
    // Both answers, then one update; an older refresh's answers are dropped.
    const quint64 refresh = ++m_refreshes;
    auto *index = new QDBusPendingCallWatcher(call(QStringLiteral("getLayout")), this);
    auto *list = new QDBusPendingCallWatcher(call(QStringLiteral("getLayoutsList")), this);
    auto done = std::make_shared<bool>(false);
    const auto answered = [this, refresh, index, list, done] {
        if (*done || !index->isFinished() || !list->isFinished())
            return;
        *done = true;
        index->deleteLater();
        list->deleteLater();
        if (refresh != m_refreshes)
            return;
        const QDBusPendingReply<uint> current = *index;
        const QList<LayoutNames> layouts = layoutsOf(list->reply());
        if (current.isError() || current.value() >= uint(layouts.size()))
            return update(std::nullopt);
        update(sourceOf(layouts.at(qsizetype(current.value()))));
    };
    connect(index, &QDBusPendingCallWatcher::finished, this, answered);
    connect(list, &QDBusPendingCallWatcher::finished, this, answered);
}

void KdeInputSourceProvider::update(std::optional<InputSourceInfo> source)
{
    const auto key = [](const std::optional<InputSourceInfo> &s) {
        return s ? std::tuple(s->identifier, s->localizedName, s->languages) : std::tuple(QString(), QString(), QStringList());
    };
    if (key(source) == key(m_source))
        return;
    m_source = std::move(source);
    if (m_onChange)
        m_onChange();
}
