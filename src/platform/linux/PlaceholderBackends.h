#pragma once

// Backends that report "not available" until the real Linux ones exist.

#include "models/QuorlaError.h"
#include "platform/Accessibility.h"
#include "platform/AudioCapture.h"
#include "platform/CredentialStore.h"
#include "platform/InputSourceProvider.h"
#include "platform/KeyboardHook.h"
#include "platform/Workspace.h"

class PlaceholderKeyboardHook : public KeyboardHook
{
public:
    void install(Events) override
    {
        throw QuorlaError::hotkeyRegistrationFailed(
            QStringLiteral("Global keyboard monitoring isn't available in this build."));
    }
    void uninstall() override {}
    bool isInstalled() const override { return false; }
    void setSpaceCaptureWanted(bool) override {}
    QString triggerDisplayName() const override { return QStringLiteral("Right Ctrl"); }
    void setTriggerKey(const TriggerKey &) override {}
};

class PlaceholderWorkspace : public Workspace
{
public:
    ApplicationHandlePtr frontmostApplication() override { return nullptr; }
    bool openSettingsPane(const QString &) override { return false; }
};

class PlaceholderAccessibility : public Accessibility
{
public:
    bool isProcessTrusted() override { return false; }
    bool requestTrust() override { return false; }
    std::unique_ptr<AccessibleElement> focusedElement(qint64) override { return nullptr; }
};

class PlaceholderAudioCapture : public AudioCapture
{
public:
    PermissionState permissionState() override { return PermissionState::denied; }
    QCoro::Task<bool> requestPermission() override { co_return false; }
    void start(const QString &) override { throw QuorlaError(QuorlaError::Kind::recordingFailed); }
    double currentTime() const override { return 0; }
    float takePeakPower() override { return -160.0f; }
    void stop() override {}
};

class PlaceholderInputSourceProvider : public InputSourceProvider
{
public:
    std::optional<InputSourceInfo> currentInputSource() override { return std::nullopt; }
    void startObservingChanges(std::function<void()>) override {}
};

class PlaceholderCredentialStore : public CredentialStore
{
public:
    Result update(const QString &, const QString &, const QByteArray &) override { return {Outcome::failure, -1}; }
    Result add(const QString &, const QString &, const QByteArray &) override { return {Outcome::failure, -1}; }
    Result copy(const QString &, const QString &, QByteArray *) override { return {Outcome::itemNotFound, 0}; }
    Result exists(const QString &, const QString &) override { return {Outcome::itemNotFound, 0}; }
    Result remove(const QString &, const QString &) override { return {Outcome::success, 0}; }
};
