#include "ModelFixture.h"

#include "app/AppServicesFactory.h"
#include "platform/PlatformBackends.h"
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

// Through the factory the application uses, so its wiring is what the tests see.
AppModel &ModelFixture::makeModel()
{
    m_model.reset();
    auto preferences = std::make_shared<PreferencesStore>(preferencesPath());
    preferences->setString(QStringLiteral("latestReleaseURL"), latestReleaseURL.toString());
    const PlatformBackends backends{keyboard, workspace, accessibility, audio, inputSource, credentials, keys, clipboard};
    services = makeAppServices(backends, std::move(preferences), &network, words, recordingsDirectory());
    // The speech service and the inserter stand in for HTTP and for the whole insertion.
    services.openAIClient = speech;
    services.textInsertionService = inserter;
    services.now = [this] { return now; };
    m_model = std::make_unique<AppModel>(services);
    return *m_model;
}
