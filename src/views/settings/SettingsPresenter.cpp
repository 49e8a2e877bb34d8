#include "SettingsPresenter.h"

#include "app/AppModel.h"
#include "models/TranscriptionMode.h"
#include "models/TriggerKey.h"
#include "support/PlatformWords.h"
#include "services/ServiceAddress.h"
#include "services/TranslationLanguageCatalog.h"

#include <algorithm>

SettingsPresenter::SettingsPresenter(QObject *parent)
    : ModelPresenter(parent)
{
    m_translationCodes << QString();
    m_translationNames << QStringLiteral("Original language");
    for (const auto &language : TranslationLanguageCatalog::sortedForDisplay(TranslationLanguageCatalog::all())) {
        m_translationCodes << language.code;
        m_translationNames << language.displayName;
    }
}

void SettingsPresenter::observe(AppModel &model)
{
    connect(&model, &AppModel::translationLanguageCodeChanged, this, &SettingsPresenter::translationChanged);
    connect(&model, &AppModel::transcriptionModeChanged, this, &SettingsPresenter::transcriptionModeChanged);
    connect(&model, &AppModel::triggerDisplayChanged, this, &SettingsPresenter::triggerChanged);
    connect(&model, &AppModel::serviceAddressChanged, this, &SettingsPresenter::serviceAddressChanged);
    // Bindings read before the model arrived are stale now.
    Q_EMIT translationChanged();
    Q_EMIT transcriptionModeChanged();
    Q_EMIT serviceAddressChanged();
}

QStringList SettingsPresenter::translationChoices() const
{
    return m_translationNames;
}

int SettingsPresenter::translationIndex() const
{
    if (!model())
        return 0;
    return std::max<int>(0, m_translationCodes.indexOf(model()->translationLanguageCode()));
}

void SettingsPresenter::setTranslationIndex(int index)
{
    if (model() && index >= 0 && index < m_translationCodes.size())
        model()->setTranslationLanguageCode(m_translationCodes[index]);
}

QStringList SettingsPresenter::transcriptionModeChoices() const
{
    return {QStringLiteral("Fast (%1)").arg(transcriptionModelName(TranscriptionMode::fast)),
            QStringLiteral("More accurate (%1)").arg(transcriptionModelName(TranscriptionMode::moreAccurate)),
            QStringLiteral("Live, transcribed as you speak (%1)").arg(transcriptionModelName(TranscriptionMode::live))};
}

int SettingsPresenter::transcriptionModeIndex() const
{
    if (!model())
        return 0;
    const auto found = std::find(allTranscriptionModes.begin(), allTranscriptionModes.end(), model()->transcriptionMode());
    return int(found - allTranscriptionModes.begin());
}

void SettingsPresenter::setTranscriptionModeIndex(int index)
{
    if (model() && index >= 0 && index < int(allTranscriptionModes.size()))
        model()->setTranscriptionMode(allTranscriptionModes[index]);
}

QStringList SettingsPresenter::triggerChoices() const
{
    QStringList names;
    for (const TriggerKey &key : TriggerKey::all())
        names.append(key.displayName);
    return names;
}

int SettingsPresenter::triggerIndex() const
{
    if (!model())
        return 0;
    const QString current = model()->triggerKey();
    const auto &keys = TriggerKey::all();
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (keys[i].id == current)
            return int(i);
    }
    return 0;
}

void SettingsPresenter::setTriggerIndex(int index)
{
    const auto &keys = TriggerKey::all();
    if (model() && index >= 0 && index < keys.size())
        model()->setTriggerKey(keys[index].id);
}

QString SettingsPresenter::desktopShortcutsNote() const
{
    if (!model())
        return QString();
    const PlatformWords &words = *model()->services().words;
    if (model()->toggleShortcutDisplay().isEmpty())
        return words.desktopShortcutsNote;
    return words.desktopShortcutsInUseNote.arg(model()->triggerDisplay(), model()->toggleShortcutDisplay());
}

QString SettingsPresenter::serviceAddress() const
{
    return model() ? model()->serviceAddress() : QString();
}

void SettingsPresenter::setServiceAddress(const QString &address)
{
    if (model())
        model()->setServiceAddress(address);
}

QString SettingsPresenter::serviceAddressMessage() const
{
    if (const auto problem = ServiceAddress::problemWith(serviceAddress()))
        return *problem;
    if (const auto environment = ServiceAddress::environmentAPIBaseURL())
        return QStringLiteral("QUORLA_API_BASE_URL is set, so Quorla uses %1 instead of this address.")
            .arg(environment->toDisplayString());
    return QString();
}
