#pragma once

#include "views/common/ModelPresenter.h"

#include <QString>
#include <QVariantList>

// The setup card shared by the onboarding sheet and the Settings page: the API key
// row and the three permission rows, recomputed whenever the model changes.
class OnboardingPresenter : public ModelPresenter
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariantList permissionRows READ permissionRows NOTIFY permissionsChanged)
    Q_PROPERTY(QString keyStatusText READ keyStatusText NOTIFY keyChanged)
    Q_PROPERTY(QString keyTone READ keyTone NOTIFY keyChanged)
    Q_PROPERTY(QString keyFootnote READ keyFootnote NOTIFY keyChanged)
    Q_PROPERTY(QString saveKeyStepText READ saveKeyStepText NOTIFY modelChanged)
    Q_PROPERTY(QString unlockKeyTitle READ unlockKeyTitle NOTIFY modelChanged)

public:
    using ModelPresenter::ModelPresenter;

    // One map per row: title, detail, statusText, tone, buttonTitle, isProminent.
    [[nodiscard]] QVariantList permissionRows() const;
    [[nodiscard]] QString keyStatusText() const;
    [[nodiscard]] QString keyTone() const;
    [[nodiscard]] QString keyFootnote() const;
    // The button that asks the credential store to unlock.
    [[nodiscard]] QString unlockKeyTitle() const;
    // The help sheet's last step names the desktop's credential store.
    [[nodiscard]] QString saveKeyStepText() const;

    // The row's button: opens the desktop's settings place or asks for access.
    Q_INVOKABLE void performRowAction(int index);

Q_SIGNALS:
    void permissionsChanged();
    void keyChanged();

protected:
    void observe(AppModel &model) override;
};
