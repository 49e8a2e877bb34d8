#pragma once

#include "platform/InputSourceProvider.h"

#include <QDBusConnection>
#include <QObject>

class QDBusPendingCall;

// The active keyboard layout from KDE Plasma's keyboard layout service (org.kde.keyboard),
// named and given languages by xkeyboard-config. Where the service is missing nothing is
// known and no notice comes. Every call is asynchronous; the answer is kept until the next.
class KdeInputSourceProvider : public QObject, public InputSourceProvider
{
    Q_OBJECT

public:
    explicit KdeInputSourceProvider(QDBusConnection bus);

    std::optional<InputSourceInfo> currentInputSource() override { return m_source; }
    void startObservingChanges(std::function<void()> onChange) override;

private Q_SLOTS:
    void refresh();

private:
    QDBusPendingCall call(const QString &method);
    void update(std::optional<InputSourceInfo> source);

    QDBusConnection m_bus;
    std::optional<InputSourceInfo> m_source;
    std::function<void()> m_onChange;
    quint64 m_refreshes = 0;
};
