#pragma once

#include "stores/AutostartEntry.h"

#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// The Settings page's "Start Quorla when you log in" switch and its system checks.
// The checks are `quorla doctor --json` in a child process: the same checks as on the
// terminal, and a stuck probe never touches the window.
class SystemPresenter : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY startsAtLoginChanged)
    Q_PROPERTY(QString startsAtLoginMessage READ startsAtLoginMessage NOTIFY startsAtLoginChanged)
    Q_PROPERTY(QVariantList checks READ checks NOTIFY checksChanged)
    Q_PROPERTY(bool checking READ checking NOTIFY checksChanged)
    Q_PROPERTY(QString checksSummary READ checksSummary NOTIFY checksChanged)

public:
    explicit SystemPresenter(QObject *parent = nullptr);
    ~SystemPresenter() override;

    // The quorla program: this one, or the one installed beside the window's.
    static QString quorlaProgram();

    [[nodiscard]] bool startsAtLogin() const { return m_autostart.isEnabled(); }
    void setStartsAtLogin(bool enabled);
    [[nodiscard]] QString startsAtLoginMessage() const { return m_autostartMessage; }
    // {"status", "what", "fix"} maps, as the doctor printed them.
    [[nodiscard]] QVariantList checks() const { return m_checks; }
    [[nodiscard]] bool checking() const { return m_process != nullptr; }
    [[nodiscard]] QString checksSummary() const { return m_summary; }

    Q_INVOKABLE void runChecks();

Q_SIGNALS:
    void startsAtLoginChanged();
    void checksChanged();

private:
    void finishChecks();

    AutostartEntry m_autostart{AutostartEntry::defaultFilePath()};
    QString m_autostartMessage;
    QPointer<QProcess> m_process;
    QVariantList m_checks;
    QString m_summary;
};
