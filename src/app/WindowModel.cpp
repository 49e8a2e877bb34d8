#include "WindowModel.h"

#include "models/AppUpdate.h"
#include "models/InputLanguageHint.h"
#include "models/TriggerKey.h"

WindowModel::WindowModel(const PlatformWords &words, QObject *parent)
    : QObject(parent)
    , m_words(&words)
{
    // A value read from the window's link names its type; the name must be known here.
    qRegisterMetaType<QList<CustomDictionaryEntry>>();
    qRegisterMetaType<CustomDictionaryEntry>();
    qRegisterMetaType<QList<TranscriptEntry>>();
    qRegisterMetaType<TranscriptEntry>();
    qRegisterMetaType<TypingStatistics>();
    qRegisterMetaType<AppUpdate>();
    qRegisterMetaType<InputLanguageHint>();
}

QVariantList WindowModel::triggerKeyChoices()
{
    QVariantList choices;
    for (const TriggerKey &key : TriggerKey::all())
        choices.append(QVariantMap{{QStringLiteral("id"), key.id}, {QStringLiteral("displayName"), key.displayName}});
    return choices;
}
