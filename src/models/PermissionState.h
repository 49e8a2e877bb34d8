#pragma once

#include <QMetaType>

// Microphone permission as the recorder reports it (cases in this order).
enum class PermissionState { authorized,
                             denied,
                             notDetermined };
