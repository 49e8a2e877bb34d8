#pragma once

#include <QList>
#include <QString>
#include <optional>

// A key the user can hold to dictate. PC keyboards rarely send Fn to the system, so on
// Linux the trigger is a choice; the id is what the "triggerKey" preference stores.
struct TriggerKey {
    QString id;
    QString displayName;

    // Every choice, in the order a settings list shows them; the first is the default.
    static const QList<TriggerKey> &all();
    static const TriggerKey &defaultKey();
    static std::optional<TriggerKey> withId(const QString &id);
    // The stored id's key; the default for a missing, empty or unknown id.
    static TriggerKey normalized(const std::optional<QString> &id);

    friend bool operator==(const TriggerKey &, const TriggerKey &) = default;
};
