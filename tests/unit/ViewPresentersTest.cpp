#include "FakeOpenAIServer.h"
#include "ModelFixture.h"
#include "TaskResult.h"

#include "app/AppServicesFactory.h"
#include "platform/PlatformBackends.h"
#include "platform/QtClipboard.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "views/icons/SymbolIcon.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

// A new service address serves the next request, without a restart.
TEST(ServiceAddressSetting, aNewAddressServesTheNextRequest)
{
    if (qEnvironmentVariableIsSet("QUORLA_API_BASE_URL"))
        GTEST_SKIP() << "QUORLA_API_BASE_URL overrides the setting";
    ModelFixture fixture;
    FakeOpenAIServer first, second;
    PlatformBackends backends{fixture.keyboard, fixture.workspace, fixture.accessibility, fixture.audio,
                              fixture.inputSource, fixture.credentials, fixture.keys, std::make_shared<QtClipboard>()};
    AppModel model(makeAppServices(backends, std::make_shared<PreferencesStore>(fixture.preferencesPath()), &fixture.network));
    for (FakeOpenAIServer *server : {&first, &second}) {
        server->setReply("/v1/chat/completions", FakeOpenAIServer::json(200, FakeOpenAIServer::chatBody(QStringLiteral("Hi."))));
        model.setServiceAddress(server->baseURL().toString() + (server == &second ? QStringLiteral("/") : QString()));
        EXPECT_EQ(waitForResult(model.services().openAIClient->polishTranscript("hi", "sk-test", {}, {})).value, "Hi.");
        EXPECT_EQ(server->requests().size(), 1);
    }
    model.setServiceAddress(QStringLiteral("  "));
    EXPECT_FALSE(PreferencesStore(fixture.preferencesPath()).contains(PreferenceKeys::apiBaseURL));
}

TEST(SymbolIcon, everySymbolOfTheInterfaceHasANameAndABundledPicture)
{
    for (const char *symbol : {"waveform.mid", "book.closed", "gearshape", "arrow.turn.down.right", "questionmark.circle",
                               "key.fill", "xmark", "creditcard", "book", "exclamationmark.triangle.fill", "doc.on.doc"}) {
        const QString name = QString::fromLatin1(symbol);
        EXPECT_TRUE(SymbolIcon::freedesktopName(name).endsWith(QLatin1String("-symbolic"))) << symbol;
        EXPECT_TRUE(QFile::exists(SymbolIcon::bundledPath(name))) << symbol;
        EXPECT_FALSE(SymbolIcon::tintedPixmap(name, 16, Qt::red).isNull()) << symbol;
    }
}

} // namespace
