#include "TriggerKey.h"

const QList<TriggerKey> &TriggerKey::all()
{
    static const QList<TriggerKey> keys{
        {QStringLiteral("rightControl"), QStringLiteral("Right Ctrl")},
        {QStringLiteral("rightAlt"), QStringLiteral("Right Alt")},
        {QStringLiteral("rightSuper"), QStringLiteral("Right Super")},
        {QStringLiteral("menu"), QStringLiteral("Menu")},
        {QStringLiteral("scrollLock"), QStringLiteral("Scroll Lock")},
        {QStringLiteral("pause"), QStringLiteral("Pause")},
        {QStringLiteral("fn"), QStringLiteral("Fn")},
    };
    return keys;
}

const TriggerKey &TriggerKey::defaultKey()
{
    return all().front();
}

std::optional<TriggerKey> TriggerKey::withId(const QString &id)
{
    for (const TriggerKey &key : all()) {
        if (key.id == id)
            return key;
    }
    return std::nullopt;
}

TriggerKey TriggerKey::normalized(const std::optional<QString> &id)
{
    return withId(id.value_or(QString()).trimmed()).value_or(defaultKey());
}
