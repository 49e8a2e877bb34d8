#include "AppServicesFactory.h"

#include "AppInfo.h"
#include "services/AppUpdateClient.h"
#include "services/AudioRecorder.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "services/InputSourceLanguageDetector.h"
#include "services/OpenAIClient.h"
#include "services/ServiceAddress.h"
#include "services/TextInsertionService.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

AppServices makeAppServices(const PlatformBackends &backends, std::shared_ptr<PreferencesStore> preferences,
                            QNetworkAccessManager *network, const PlatformWords *words,
                            const QString &recordingsDirectory)
{
    AppServices services;
    services.words = words ? words : &PlatformWords::current();
    services.audioRecorder = std::make_shared<AudioRecorder>(backends.audioCapture, recordingsDirectory);
    services.openAIClient = std::make_shared<OpenAIClient>(
        network, OpenAIClient::BaseURLSource([preferences] { return ServiceAddress::configuredAPIBaseURL(*preferences); }));
    services.keychainStore = std::make_shared<KeychainStore>(backends.credentialStore,
                                                             QStringLiteral(QUORLA_APP_ID), *services.words);
    services.pushToTalkMonitor = std::make_shared<GlobalPushToTalkMonitor>(backends.keyboardHook, backends.workspace);
    services.textInsertionService = std::make_shared<TextInsertionService>(
        backends.accessibility, backends.keySynthesizer, backends.clipboard);
    services.inputSourceLanguageDetector = std::make_shared<InputSourceLanguageDetector>(backends.inputSource);
    services.appUpdateClient = std::make_shared<AppUpdateClient>(
        network, ServiceAddress::configuredLatestReleaseURL(*preferences));
    services.accessibility = backends.accessibility;
    services.workspace = backends.workspace;
    services.clipboard = backends.clipboard;
    services.preferences = std::move(preferences);
    return services;
}
