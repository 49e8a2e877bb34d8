#pragma once

#include "app/AppServices.h"
#include "platform/PlatformBackends.h"

class QNetworkAccessManager;

// Builds the real services over the platform backends. Without words, the running
// platform's; without a recordings directory, the recorder's default one.
AppServices makeAppServices(const PlatformBackends &backends, std::shared_ptr<PreferencesStore> preferences,
                            QNetworkAccessManager *network, const PlatformWords *words = nullptr,
                            const QString &recordingsDirectory = {});
