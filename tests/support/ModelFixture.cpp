#include "ModelFixture.h"

#include "AppInfo.h"
#include "services/AppUpdateClient.h"
#include "services/AudioRecorder.h"
#include "services/GlobalPushToTalkMonitor.h"
#include "services/InputSourceLanguageDetector.h"
#include "stores/KeychainStore.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformWords.h"

#include <QNetworkReply>
#include <QTest>

ModelFixture::ModelFixture()
    : words(&PlatformWords::macOS())
{
}
ModelFixture::~ModelFixture()
{
    // A request still in flight would leave its coroutine suspended for ever once the
    // manager deletes the reply: let each one finish and be released (the address
    // refuses at once).
    static_cast<void>(QTest::qWaitFor([this] { return network.findChildren<QNetworkReply *>().isEmpty(); }));
}

QString ModelFixture::preferencesPath() const
{
    return directory.filePath(QStringLiteral("config/Quorla/preferences.json"));
}

QString ModelFixture::recordingsDirectory() const
{
    return directory.filePath(QStringLiteral("tmp/Quorla"));
}

AppModel &ModelFixture::makeModel()
{
    m_model.reset();
    services = {};
    services.words = words;
    services.audioRecorder = std::make_shared<AudioRecorder>(audio, recordingsDirectory());
    services.openAIClient = speech;
    services.keychainStore =
        std::make_shared<KeychainStore>(credentials, QStringLiteral(QUORLA_APP_ID), *services.words);
    services.pushToTalkMonitor = std::make_shared<GlobalPushToTalkMonitor>(keyboard, workspace);
    services.textInsertionService = inserter;
    services.inputSourceLanguageDetector = std::make_shared<InputSourceLanguageDetector>(inputSource);
    services.appUpdateClient = std::make_shared<AppUpdateClient>(&network, latestReleaseURL);
    services.accessibility = accessibility;
    services.workspace = workspace;
    services.preferences = std::make_shared<PreferencesStore>(preferencesPath());
    services.now = [this] { return now; };
    m_model = std::make_unique<AppModel>(services);
    return *m_model;
}
