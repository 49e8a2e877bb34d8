#include "WindowModel.h"

#include "models/TriggerKey.h"

WindowModel::WindowModel(const PlatformWords &words, QObject *parent)
    : QObject(parent)
    , m_words(&words)
{
}

QVariantList WindowModel::triggerKeyChoices()
{
    QVariantList choices;
    for (const TriggerKey &key : TriggerKey::all())
        choices.append(QVariantMap{{QStringLiteral("id"), key.id}, {QStringLiteral("displayName"), key.displayName}});
    return choices;
}
