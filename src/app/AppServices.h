#pragma once

#include <QDateTime>
#include <functional>
#include <memory>

class Accessibility;
class AppUpdateClient;
class AudioRecorder;
class Clipboard;
class GlobalPushToTalkMonitor;
class InputSourceLanguageDetector;
class KeychainStore;
class PreferencesStore;
class SpeechService;
class TextInserter;
class Workspace;
struct PlatformWords;

// Everything the model is built with. The application entry makes the real ones;
// tests make the same services over fakes at the platform seams.
struct AppServices {
    std::shared_ptr<AudioRecorder> audioRecorder;
    std::shared_ptr<SpeechService> openAIClient;
    std::shared_ptr<KeychainStore> keychainStore;
    std::shared_ptr<GlobalPushToTalkMonitor> pushToTalkMonitor;
    std::shared_ptr<TextInserter> textInsertionService;
    std::shared_ptr<InputSourceLanguageDetector> inputSourceLanguageDetector;
    std::shared_ptr<AppUpdateClient> appUpdateClient;
    std::shared_ptr<Accessibility> accessibility;
    std::shared_ptr<Workspace> workspace;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<PreferencesStore> preferences;
    const PlatformWords *words = nullptr;
    // The wall clock; tests pin it.
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); };
};
