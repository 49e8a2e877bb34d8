#include "OnboardingPresenter.h"

#include "app/AppModel.h"
#include "support/PlatformWords.h"
#include "views/onboarding/OnboardingPermissionRow.h"

namespace {

QList<OnboardingPermissionRow> rowsOf(const AppModel &model)
{
    return onboardingPermissionRows(model.microphonePermissionState(), model.triggerRegistrationError().has_value(),
                                    model.accessibilityPermissionGranted(), model.triggerDisplay(),
                                    model.toggleDisplay(), *model.services().words);
}

CredentialsStatus keyStatus(const AppModel &model)
{
    return credentialsStatus(model.hasStoredAPIKey(), model.isKeychainLocked(), *model.services().words);
}

} // namespace

void OnboardingPresenter::observe(AppModel &model)
{
    connect(&model, &AppModel::microphonePermissionStateChanged, this, &OnboardingPresenter::permissionsChanged);
    connect(&model, &AppModel::triggerRegistrationErrorChanged, this, &OnboardingPresenter::permissionsChanged);
    connect(&model, &AppModel::accessibilityPermissionGrantedChanged, this, &OnboardingPresenter::permissionsChanged);
    connect(&model, &AppModel::triggerDisplayChanged, this, &OnboardingPresenter::permissionsChanged);
    connect(&model, &AppModel::hasStoredAPIKeyChanged, this, &OnboardingPresenter::keyChanged);
    connect(&model, &AppModel::isKeychainLockedChanged, this, &OnboardingPresenter::keyChanged);
    // Bindings read before the model arrived are stale now.
    Q_EMIT permissionsChanged();
    Q_EMIT keyChanged();
}

QVariantList OnboardingPresenter::permissionRows() const
{
    QVariantList rows;
    if (!model())
        return rows;
    for (const auto &row : rowsOf(*model()))
        rows.append(QVariantMap{
            {QStringLiteral("title"), row.title},
            {QStringLiteral("detail"), row.detail},
            {QStringLiteral("statusText"), row.statusText},
            {QStringLiteral("tone"), row.tone},
            {QStringLiteral("buttonTitle"), row.buttonTitle},
            {QStringLiteral("isProminent"), row.isProminent},
        });
    return rows;
}

QString OnboardingPresenter::keyStatusText() const
{
    return model() ? keyStatus(*model()).statusText : QString();
}

QString OnboardingPresenter::keyTone() const
{
    return model() ? keyStatus(*model()).tone : QString();
}

QString OnboardingPresenter::keyFootnote() const
{
    return model() ? keyStatus(*model()).footnote : QString();
}

QString OnboardingPresenter::unlockKeyTitle() const
{
    return model() ? model()->services().words->unlockCredentialStoreAction : QString();
}

QString OnboardingPresenter::saveKeyStepText() const
{
    return model() ? model()->services().words->helpSaveKeyStep : QString();
}

void OnboardingPresenter::performRowAction(int index)
{
    if (!model())
        return;
    const auto rows = rowsOf(*model());
    if (index < 0 || index >= rows.size())
        return;
    switch (rows[index].action) {
    case OnboardingPermissionRow::Action::openMicrophoneSettings:
        model()->openSettingsPane(QStringLiteral("Privacy_Microphone"));
        break;
    case OnboardingPermissionRow::Action::openKeyboardSettings:
        model()->openSettingsPane(QStringLiteral("Privacy_ListenEvent"));
        break;
    case OnboardingPermissionRow::Action::openAccessibilitySettings:
        model()->openSettingsPane(QStringLiteral("Privacy_Accessibility"));
        break;
    case OnboardingPermissionRow::Action::requestAccessibility:
        model()->requestAccessibilityAccess();
        break;
    }
}
