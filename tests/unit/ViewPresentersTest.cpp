#include "FakeKeySynthesizer.h"
#include "FakeOpenAIServer.h"
#include "ModelFixture.h"
#include "TaskResult.h"

#include "app/AppServicesFactory.h"
#include "models/AppSection.h"
#include "platform/PlatformBackends.h"
#include "services/SpeechService.h"
#include "models/TriggerKey.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "views/MainWindowPresenter.h"
#include "views/icons/SymbolIcon.h"
#include "views/settings/SettingsPresenter.h"
#include "views/theme/AppTheme.h"

#include <QFile>
#include <QPalette>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

TEST(SettingsPresenter, translationPickerStartsWithTheOriginalLanguageAndWritesTheModel)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    SettingsPresenter settings;
    settings.setModelObject(&model);
    const QStringList choices = settings.translationChoices();
    ASSERT_GT(choices.size(), 10);
    EXPECT_EQ(choices.first(), QStringLiteral("Original language"));
    EXPECT_EQ(settings.translationIndex(), 0);

    const int german = int(choices.indexOf(QStringLiteral("German")));
    ASSERT_GT(german, 0);
    settings.setTranslationIndex(german);
    EXPECT_EQ(model.translationLanguageCode(), QStringLiteral("de"));
    EXPECT_EQ(settings.translationIndex(), german);
    settings.setTranslationIndex(0);
    EXPECT_TRUE(model.translationLanguageCode().isEmpty());
    settings.setTranslationIndex(int(choices.size()));
    EXPECT_TRUE(model.translationLanguageCode().isEmpty());
}

TEST(SettingsPresenter, transcriptionModeAndServiceAddressPersist)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    SettingsPresenter settings;
    settings.setModelObject(&model);
    settings.setTranscriptionModeIndex(1);
    EXPECT_EQ(model.transcriptionMode(), TranscriptionMode::moreAccurate);

    settings.setServiceAddress(QStringLiteral("http://127.0.0.1:8080"));
    PreferencesStore reread(fixture.preferencesPath());
    EXPECT_EQ(reread.stringValue(PreferenceKeys::apiBaseURL), QStringLiteral("http://127.0.0.1:8080"));
    settings.setServiceAddress(QStringLiteral("  "));
    EXPECT_FALSE(PreferencesStore(fixture.preferencesPath()).contains(PreferenceKeys::apiBaseURL));
}

TEST(SettingsPresenter, triggerPickerListsEveryKeyAndChangesTheTriggerAtOnce)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    SettingsPresenter settings;
    settings.setModelObject(&model);
    const QStringList choices = settings.triggerChoices();
    ASSERT_EQ(choices.size(), TriggerKey::all().size());
    EXPECT_EQ(choices.at(settings.triggerIndex()), TriggerKey::defaultKey().displayName);

    const int pause = int(choices.indexOf(QStringLiteral("Pause")));
    ASSERT_GE(pause, 0);
    settings.setTriggerIndex(pause);
    EXPECT_EQ(settings.triggerIndex(), pause);
    EXPECT_EQ(PreferencesStore(fixture.preferencesPath()).stringValue(PreferenceKeys::triggerKey),
              TriggerKey::all().at(pause).id);
    settings.setTriggerIndex(int(choices.size()));
    EXPECT_EQ(settings.triggerIndex(), pause);
}

// The address typed in Settings serves the next request, without a restart.
TEST(SettingsPresenter, aNewServiceAddressServesTheNextRequest)
{
    if (qEnvironmentVariableIsSet("QUORLA_API_BASE_URL"))
        GTEST_SKIP() << "QUORLA_API_BASE_URL overrides the setting";
    ModelFixture fixture;
    FakeOpenAIServer first, second;
    for (FakeOpenAIServer *server : {&first, &second})
        server->setReply("/v1/chat/completions", FakeOpenAIServer::json(200, FakeOpenAIServer::chatBody(QStringLiteral("Hi."))));
    PlatformBackends backends{fixture.keyboard, fixture.workspace, fixture.accessibility, fixture.audio,
                              fixture.inputSource, fixture.credentials, std::make_shared<FakeKeySynthesizer>()};
    AppModel model(makeAppServices(backends, std::make_shared<PreferencesStore>(fixture.preferencesPath()),
                                   &fixture.network));
    SettingsPresenter settings;
    settings.setModelObject(&model);

    const auto polish = [&] {
        return waitForResult(model.services().openAIClient->polishTranscript(QStringLiteral("hi"), QStringLiteral("sk-test"), {}, {}));
    };
    settings.setServiceAddress(first.baseURL().toString());
    EXPECT_EQ(polish().value, QStringLiteral("Hi."));
    settings.setServiceAddress(second.baseURL().toString() + QStringLiteral("/"));
    EXPECT_EQ(polish().value, QStringLiteral("Hi."));
    EXPECT_EQ(first.requests().size(), 1);
    EXPECT_EQ(second.requests().size(), 1);
    EXPECT_TRUE(settings.serviceAddressMessage().isEmpty());

    settings.setServiceAddress(QStringLiteral("api.example.com"));
    EXPECT_EQ(settings.serviceAddressMessage(),
              QStringLiteral("Enter an address that starts with https:// or http://, such as https://api.openai.com."));
}

TEST(MainWindowPresenter, sectionsInSidebarOrder)
{
    MainWindowPresenter frame;
    const auto sections = frame.sections();
    ASSERT_EQ(sections.size(), 3);
    const QStringList titles{QStringLiteral("Quorla"), QStringLiteral("Dictionary"), QStringLiteral("Settings")};
    const QStringList symbols{QStringLiteral("waveform.mid"), QStringLiteral("book.closed"), QStringLiteral("gearshape")};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(sections[i].toMap().value(QStringLiteral("title")).toString(), titles[i]);
        EXPECT_EQ(sections[i].toMap().value(QStringLiteral("symbol")).toString(), symbols[i]);
    }
    frame.setSelectedSection(QStringLiteral("settings"));
    EXPECT_EQ(frame.selectedIndex(), 2);
    frame.setSelectedSection(QStringLiteral("nowhere"));
    EXPECT_EQ(frame.selectedSection(), QStringLiteral("settings"));
}

TEST(MainWindowPresenter, onboardingIsPresentedOnceAndNeverHiddenByTheCheck)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    ASSERT_TRUE(model.requiresOnboarding()) << "no key saved yet";
    MainWindowPresenter frame;
    frame.setModelObject(&model);
    QSignalSpy presented(&frame, &MainWindowPresenter::onboardingPresentedChanged);
    frame.presentOnboardingIfNeeded();
    frame.presentOnboardingIfNeeded();
    EXPECT_TRUE(frame.onboardingPresented());
    EXPECT_EQ(presented.count(), 1);
    frame.dismissOnboarding();
    EXPECT_FALSE(frame.onboardingPresented());
}

TEST(MainWindowPresenter, completeSetupNeverPresentsOnboarding)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-proj-test"));
    model.saveAPIKey();
    if (model.requiresOnboarding())
        GTEST_SKIP() << "saving the key is not available in this build";
    MainWindowPresenter frame;
    frame.setModelObject(&model);
    frame.contentAppeared();
    frame.presentOnboardingIfNeeded();
    EXPECT_FALSE(frame.onboardingPresented());
    EXPECT_EQ(frame.setupRowText(), QStringLiteral("Setup complete"));
}

TEST(AppTheme, darkFollowsTheWindowColour)
{
    QPalette light;
    light.setColor(QPalette::Window, QColor(0xef, 0xef, 0xef));
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2a, 0x2a, 0x2e));
    EXPECT_FALSE(AppTheme::isDarkPalette(light));
    EXPECT_TRUE(AppTheme::isDarkPalette(dark));
}

TEST(AppTheme, symbolSourceCarriesTheColourOutsideTheFragment)
{
    EXPECT_EQ(AppTheme::symbolSource(QStringLiteral("xmark"), QColor(0x1b, 0x1d, 0x22)),
              QUrl(QStringLiteral("image://symbol/xmark?color=1b1d22")));
    EXPECT_TRUE(AppTheme::symbolSource(QString(), Qt::red).isEmpty());
}

TEST(SymbolIcon, everySymbolOfTheInterfaceHasANameAndABundledPicture)
{
    for (const char *symbol : {"waveform.mid", "book.closed", "gearshape",
                               "arrow.turn.down.right", "questionmark.circle", "key.fill", "xmark", "creditcard",
                               "book", "exclamationmark.triangle.fill", "doc.on.doc"}) {
        const QString name = QString::fromLatin1(symbol);
        EXPECT_TRUE(SymbolIcon::freedesktopName(name).endsWith(QLatin1String("-symbolic"))) << symbol;
        EXPECT_TRUE(QFile::exists(SymbolIcon::bundledPath(name))) << symbol;
        EXPECT_FALSE(SymbolIcon::tintedPixmap(name, 16, Qt::red).isNull()) << symbol;
    }
    EXPECT_TRUE(SymbolIcon::freedesktopName(QStringLiteral("no.such.symbol")).isEmpty());
}

} // namespace
