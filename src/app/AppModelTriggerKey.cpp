#include "AppModel.h"

#include "models/TriggerKey.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"

QString AppModel::triggerKey() const
{
    return TriggerKey::normalized(m_services.preferences->stringValue(PreferenceKeys::triggerKey)).id;
}

QVariantList AppModel::triggerKeyChoices()
{
    QVariantList choices;
    for (const TriggerKey &key : TriggerKey::all())
        choices.append(QVariantMap{{QStringLiteral("id"), key.id}, {QStringLiteral("displayName"), key.displayName}});
    return choices;
}

void AppModel::setTriggerKey(const QString &id)
{
    const QString previousId = triggerKey();
    const std::optional<TriggerKey> chosen = TriggerKey::withId(id);
    if (chosen)
        m_services.preferences->setString(PreferenceKeys::triggerKey, chosen->id);
    else
        m_services.preferences->remove(PreferenceKeys::triggerKey);
    const TriggerKey key = chosen.value_or(TriggerKey::defaultKey());

    auto &monitor = *m_services.pushToTalkMonitor;
    // Choosing the key in use again must not end a dictation it is running.
    if (key.id == previousId && key.displayName == m_triggerDisplay && !m_triggerRegistrationError)
        return;
    bool refused = false;
    try {
        monitor.setTriggerKey(key);
    } catch (...) {
        refused = true;
        m_hasStartedServices = false;
        setTriggerRegistrationError(localizedMessage(std::current_exception()));
    }
    if (!refreshShortcutDisplay() && key.id != previousId)
        Q_EMIT triggerDisplayChanged(); // it also announces triggerKey

    // The old key could not be watched for; the new one may be.
    if (!refused && m_triggerRegistrationError && !monitor.isInstalled())
        startAppServices();
    else if (!refused && monitor.isInstalled())
        setTriggerRegistrationError(monitor.installNotice());
    if (!m_isRecording && !m_isBusy)
        setStatusMessage(defaultStatusMessage());
}

bool AppModel::refreshShortcutDisplay()
{
    const GlobalPushToTalkMonitor::Shortcut shortcut = m_services.pushToTalkMonitor->shortcut();
    if (shortcut.displayString == m_triggerDisplay && shortcut.toggleDisplayString == m_toggleShortcutDisplay)
        return false;
    m_triggerDisplay = shortcut.displayString;
    m_toggleShortcutDisplay = shortcut.toggleDisplayString;
    Q_EMIT triggerDisplayChanged();
    Q_EMIT statusInputsChanged();
    return true;
}

QString AppModel::toggleDisplay() const
{
    return m_toggleShortcutDisplay.isEmpty() ? m_triggerDisplay + QStringLiteral(" + Space") : m_toggleShortcutDisplay;
}

QString AppModel::toggleStopDisplay() const
{
    return m_toggleShortcutDisplay.isEmpty() ? QStringLiteral("Space") : m_toggleShortcutDisplay;
}
