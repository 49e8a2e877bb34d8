#pragma once

#include <QMetaType>
#include <QString>

// Microphone permission as the recorder reports it (cases in this order).
enum class PermissionState { authorized, denied, notDetermined };

inline QString rawValue(PermissionState state)
{
    switch (state) {
    case PermissionState::authorized:
        return QStringLiteral("authorized");
    case PermissionState::denied:
        return QStringLiteral("denied");
    case PermissionState::notDetermined:
        break;
    }
    return QStringLiteral("notDetermined");
}

// Anything but the two decided states is notDetermined.
inline PermissionState permissionStateFromRawValue(const QString &raw)
{
    if (raw == QLatin1String("authorized"))
        return PermissionState::authorized;
    if (raw == QLatin1String("denied"))
        return PermissionState::denied;
    return PermissionState::notDetermined;
}
