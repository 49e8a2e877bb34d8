#pragma once

#include "views/common/ModelPresenter.h"

#include <QString>
#include <QVariantList>

// The main window's frame: the sidebar's sections and selection, when the onboarding
// sheet shows, and keeping the model fresh while the window is in use.
class MainWindowPresenter : public ModelPresenter
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariantList sections READ sections CONSTANT)
    Q_PROPERTY(QString selectedSection READ selectedSection WRITE setSelectedSection NOTIFY selectedSectionChanged)
    Q_PROPERTY(QString selectedTitle READ selectedTitle NOTIFY selectedSectionChanged)
    Q_PROPERTY(int selectedIndex READ selectedIndex NOTIFY selectedSectionChanged)
    Q_PROPERTY(bool onboardingPresented READ onboardingPresented NOTIFY onboardingPresentedChanged)
    Q_PROPERTY(QString setupRowText READ setupRowText NOTIFY setupChanged)
    Q_PROPERTY(QString setupRowTone READ setupRowTone NOTIFY setupChanged)

public:
    explicit MainWindowPresenter(QObject *parent = nullptr);

    // One map per AppSection, in sidebar order: key, title, symbol.
    [[nodiscard]] QVariantList sections() const;
    [[nodiscard]] const QString &selectedSection() const { return m_selectedSection; }
    void setSelectedSection(const QString &key);
    [[nodiscard]] QString selectedTitle() const;
    [[nodiscard]] int selectedIndex() const;
    [[nodiscard]] bool onboardingPresented() const { return m_onboardingPresented; }
    // The pinned sidebar row: opens the setup card and tells whether setup is done.
    [[nodiscard]] QString setupRowText() const;
    [[nodiscard]] QString setupRowTone() const;

    // The window's content appeared: refresh permissions, check for a release and
    // retry the trigger if it failed before.
    Q_INVOKABLE void contentAppeared();
    // Shows the sheet when setup is incomplete; never hides it.
    Q_INVOKABLE void presentOnboardingIfNeeded();
    Q_INVOKABLE void presentOnboarding();
    Q_INVOKABLE void dismissOnboarding();
    Q_INVOKABLE void checkForUpdates();
    Q_INVOKABLE void quit();

Q_SIGNALS:
    void selectedSectionChanged();
    void onboardingPresentedChanged();
    void setupChanged();

protected:
    void observe(AppModel &model) override;

private:
    void applicationBecameActive();
    void setOnboardingPresented(bool presented);

    QString m_selectedSection;
    bool m_onboardingPresented = false;
};
