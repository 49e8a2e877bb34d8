#pragma once

#include "app/AppServices.h"
#include "platform/PlatformBackends.h"

class QNetworkAccessManager;

// Builds the real services over the platform backends.
AppServices makeAppServices(const PlatformBackends &backends, std::shared_ptr<PreferencesStore> preferences,
                            QNetworkAccessManager *network);
