#include "MainWindowPresenter.h"

#include "app/AppModel.h"
#include "models/AppSection.h"

#include <QCoreApplication>
#include <QGuiApplication>

MainWindowPresenter::MainWindowPresenter(QObject *parent)
    : ModelPresenter(parent)
    , m_selectedSection(rawValue(AppSection::home))
{
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            applicationBecameActive();
    });
}

void MainWindowPresenter::observe(AppModel &model)
{
    connect(&model, &AppModel::statusInputsChanged, this, &MainWindowPresenter::setupChanged);
    // Bindings read before the model arrived are stale now.
    Q_EMIT setupChanged();
}

QVariantList MainWindowPresenter::sections() const
{
    QVariantList list;
    for (const AppSection section : allAppSections)
        list.append(QVariantMap{
            {QStringLiteral("key"), rawValue(section)},
            {QStringLiteral("title"), sidebarTitle(section)},
            {QStringLiteral("symbol"), sidebarSymbol(section)},
        });
    return list;
}

void MainWindowPresenter::setSelectedSection(const QString &key)
{
    for (const AppSection section : allAppSections) {
        if (rawValue(section) == key && key != m_selectedSection) {
            m_selectedSection = key;
            Q_EMIT selectedSectionChanged();
        }
    }
}

QString MainWindowPresenter::selectedTitle() const
{
    for (const AppSection section : allAppSections)
        if (rawValue(section) == m_selectedSection)
            return sidebarTitle(section);
    return QString();
}

int MainWindowPresenter::selectedIndex() const
{
    for (std::size_t i = 0; i < allAppSections.size(); ++i)
        if (rawValue(allAppSections[i]) == m_selectedSection)
            return int(i);
    return 0;
}

QString MainWindowPresenter::setupRowText() const
{
    return model() && model()->requiresOnboarding() ? QStringLiteral("Finish setup") : QStringLiteral("Setup complete");
}

QString MainWindowPresenter::setupRowTone() const
{
    return model() && model()->requiresOnboarding() ? QStringLiteral("warning") : QStringLiteral("success");
}

void MainWindowPresenter::contentAppeared()
{
    if (!model())
        return;
    model()->refreshPermissions(true);
    model()->checkForAppUpdate();
    // A permission granted since launch may let the trigger work now.
    if (model()->triggerRegistrationError())
        model()->startAppServices();
    presentOnboardingIfNeeded();
}

void MainWindowPresenter::applicationBecameActive()
{
    if (!model())
        return;
    model()->refreshPermissions(true);
    model()->checkForAppUpdate();
}

void MainWindowPresenter::presentOnboardingIfNeeded()
{
    if (model() && model()->requiresOnboarding() && !m_onboardingPresented)
        setOnboardingPresented(true);
}

void MainWindowPresenter::presentOnboarding()
{
    setOnboardingPresented(true);
}

void MainWindowPresenter::dismissOnboarding()
{
    setOnboardingPresented(false);
}

void MainWindowPresenter::checkForUpdates()
{
    if (model())
        model()->checkForUpdates();
}

void MainWindowPresenter::quit()
{
    QCoreApplication::quit();
}

void MainWindowPresenter::setOnboardingPresented(bool presented)
{
    if (m_onboardingPresented == presented)
        return;
    m_onboardingPresented = presented;
    Q_EMIT onboardingPresentedChanged();
}
