#include "SystemPresenter.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QVariantMap>

SystemPresenter::SystemPresenter(QObject *parent)
    : QObject(parent)
{
}

SystemPresenter::~SystemPresenter()
{
    // The process goes with this object; its last signals must not reach a half-gone one.
    if (m_process)
        m_process->disconnect(this);
}

QString SystemPresenter::quorlaProgram()
{
    QString self = QCoreApplication::applicationFilePath();
    if (QFileInfo(self).fileName() == QLatin1String("quorla"))
        return self;
    const QString found = QStandardPaths::findExecutable(QStringLiteral("quorla"));
    return found.isEmpty() ? QStringLiteral("quorla") : found;
}

void SystemPresenter::setStartsAtLogin(bool enabled)
{
    m_autostartMessage = m_autostart.setEnabled(enabled, quorlaProgram())
                           ? QString()
                           : QStringLiteral("Couldn't change %1. Check that you may write to that folder.").arg(m_autostart.filePath());
    Q_EMIT startsAtLoginChanged();
}

void SystemPresenter::runChecks()
{
    if (m_process)
        return;
    m_process = new QProcess(this);
    m_checks.clear();
    m_summary = QStringLiteral("Checking\u2026");
    connect(m_process, &QProcess::finished, this, &SystemPresenter::finishChecks);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finishChecks();
    });
    m_process->start(quorlaProgram(), {QStringLiteral("doctor"), QStringLiteral("--json")});
    Q_EMIT checksChanged();
}

void SystemPresenter::finishChecks()
{
    if (!m_process)
        return;
    const QJsonObject report = QJsonDocument::fromJson(m_process->readAllStandardOutput()).object();
    m_process->deleteLater();
    m_process = nullptr;
    m_checks.clear();
    for (const auto &row : report.value(u"checks").toArray()) {
        QVariantMap check = row.toObject().toVariantMap();
        check.insert(QStringLiteral("tone"), check.value(QStringLiteral("status")).toString() == u"ok" ? QStringLiteral("success")
                                                                                                       : QStringLiteral("warning"));
        m_checks.append(check);
    }
    if (m_checks.isEmpty())
        m_summary = QStringLiteral("The checks couldn't run. Run \"quorla doctor\" in a terminal to see why.");
    else if (report.value(u"dictationCanWork").toBool())
        m_summary = QStringLiteral("Dictation can work.");
    else
        m_summary = QStringLiteral("Fix the failed checks below, then dictate again.");
    Q_EMIT checksChanged();
}
