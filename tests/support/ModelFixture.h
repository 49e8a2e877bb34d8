#pragma once

#include "FakeAccessibility.h"
#include "FakeAudioCapture.h"
#include "FakeCredentialStore.h"
#include "FakeInputSourceProvider.h"
#include "FakeKeySynthesizer.h"
#include "FakeKeyboardHook.h"
#include "FakeSpeechService.h"
#include "FakeTextInserter.h"
#include "FakeWorkspace.h"

#include "app/AppModel.h"
#include "app/AppServices.h"
#include "platform/QtClipboard.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTimeZone>
#include <memory>

struct PlatformWords;

// The model as the application builds it, over fakes at every platform seam, with its
// preferences and recordings in a private temporary directory. Tests arrange the
// fakes, then call makeModel().
class ModelFixture
{
public:
    ModelFixture();
    ~ModelFixture();

    // Builds (or rebuilds, as after a relaunch) the model over the same fakes and files.
    AppModel &makeModel();
    [[nodiscard]] AppModel &model() { return *m_model; }
    [[nodiscard]] QString preferencesPath() const { return directory.filePath("config/Quorla/preferences.json"); }
    [[nodiscard]] QString recordingsDirectory() const { return directory.filePath("tmp/Quorla"); }

    QTemporaryDir directory;
    QNetworkAccessManager network;
    std::shared_ptr<FakeKeyboardHook> keyboard = std::make_shared<FakeKeyboardHook>();
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    std::shared_ptr<FakeAccessibility> accessibility = std::make_shared<FakeAccessibility>();
    std::shared_ptr<FakeAudioCapture> audio = std::make_shared<FakeAudioCapture>();
    std::shared_ptr<FakeInputSourceProvider> inputSource = std::make_shared<FakeInputSourceProvider>();
    std::shared_ptr<FakeCredentialStore> credentials = std::make_shared<FakeCredentialStore>();
    std::shared_ptr<FakeSpeechService> speech = std::make_shared<FakeSpeechService>();
    std::shared_ptr<FakeTextInserter> inserter = std::make_shared<FakeTextInserter>();
    std::shared_ptr<FakeKeySynthesizer> keys = std::make_shared<FakeKeySynthesizer>();
    std::shared_ptr<QtClipboard> clipboard = std::make_shared<QtClipboard>();
    AppServices services;
    QDateTime now = QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);
    QUrl latestReleaseURL = QUrl(QStringLiteral("http://127.0.0.1:9/api/app/latest"));
    // The texts the model shows: the macOS table by default, whose texts tests assert.
    const PlatformWords *words;

private:
    std::unique_ptr<AppModel> m_model;
};
