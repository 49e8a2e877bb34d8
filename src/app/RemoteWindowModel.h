#pragma once

#include "app/WindowLinkProtocol.h"
#include "app/WindowLinkSocket.h"
#include "app/WindowModel.h"

#include <QHash>

class QLocalSocket;

// The model as the window's own process sees it: a mirror of the dictating process's
// model kept current over a socket, whose writes and requests go back over it. A write
// shows at once; the echoes of earlier writes never undo it while text is typed.
class RemoteWindowModel : public WindowModel
{
    Q_OBJECT

public:
    // Takes the socket.
    explicit RemoteWindowModel(QLocalSocket *socket, QObject *parent = nullptr);
    ~RemoteWindowModel() override;

    // Every property has arrived once.
    [[nodiscard]] bool isReady() const { return m_ready; }
    // Tells the dictating process the window drew its first frame.
    void reportShown();

    QString apiKeyDraft() const override { return stored<QString>("apiKeyDraft"); }
    void setApiKeyDraft(const QString &draft) override { write("apiKeyDraft", draft); }
    QList<CustomDictionaryEntry> customDictionaryEntries() const override
    {
        return stored<QList<CustomDictionaryEntry>>("customDictionaryEntries");
    }
    QList<TranscriptEntry> recentTranscripts() const override { return stored<QList<TranscriptEntry>>("recentTranscripts"); }
    TypingStatistics typingStatistics() const override { return stored<TypingStatistics>("typingStatistics"); }
    QVariant availableAppUpdateVariant() const override { return m_values.value("availableAppUpdate"); }
    bool hasAvailableAppUpdate() const override { return stored<bool>("hasAvailableAppUpdate"); }
    QString statusMessage() const override { return stored<QString>("statusMessage"); }
    QString errorMessageText() const override { return stored<QString>("errorMessage"); }
    bool isBusy() const override { return stored<bool>("isBusy"); }
    bool isRecording() const override { return stored<bool>("isRecording"); }
    bool hasStoredAPIKey() const override { return stored<bool>("hasStoredAPIKey"); }
    QString triggerRegistrationErrorText() const override { return stored<QString>("triggerRegistrationError"); }
    bool accessibilityPermissionGranted() const override { return stored<bool>("accessibilityPermissionGranted"); }
    QString microphonePermissionStateName() const override { return stored<QString>("microphonePermissionState"); }
    QVariant currentInputLanguageHintVariant() const override { return m_values.value("currentInputLanguageHint"); }
    QString triggerDisplay() const override { return stored<QString>("triggerDisplay"); }
    QString defaultStatusMessage() const override { return stored<QString>("defaultStatusMessage"); }
    bool requiresOnboarding() const override { return stored<bool>("requiresOnboarding"); }
    QString translationLanguageSummary() const override { return stored<QString>("translationLanguageSummary"); }

    bool shouldPolishTranscript() const override { return stored<bool>("shouldPolishTranscript"); }
    void setShouldPolishTranscript(bool value) override { write("shouldPolishTranscript", value); }
    QString polishPrompt() const override { return stored<QString>("polishPrompt"); }
    void setPolishPrompt(const QString &value) override { write("polishPrompt", value); }
    QString transcriptionModeName() const override { return stored<QString>("transcriptionMode"); }
    void setTranscriptionModeName(const QString &raw) override { write("transcriptionMode", raw); }
    bool autoCopyTranscript() const override { return stored<bool>("autoCopyTranscript"); }
    void setAutoCopyTranscript(bool value) override { write("autoCopyTranscript", value); }
    bool showMenuBarIcon() const override { return stored<bool>("showMenuBarIcon"); }
    void setShowMenuBarIcon(bool value) override { write("showMenuBarIcon", value); }
    QString translationLanguageCode() const override { return stored<QString>("translationLanguageCode"); }
    void setTranslationLanguageCode(const QString &value) override { write("translationLanguageCode", value); }
    QString triggerKey() const override { return stored<QString>("triggerKey"); }
    void setTriggerKey(const QString &id) override { write("triggerKey", id); }
    QString serviceAddress() const override { return stored<QString>("serviceAddress"); }
    void setServiceAddress(const QString &address) override { write("serviceAddress", address); }

    void startAppServices() override;
    void refreshPermissions(bool refreshInputLanguage) override;
    void requestAccessibilityAccess() override;
    void openSettingsPane(const QString &anchor) override;
    void saveAPIKey() override;
    void clearAPIKey() override;
    void clearCustomDictionary() override;
    void clearTranscript() override;
    void checkForUpdates() override;
    void quitApplication() override;
    void submitCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                     bool replacementEnabled) override;
    void removeCustomDictionaryEntry(const CustomDictionaryEntry &entry) override;
    void copyTranscript(const TranscriptEntry &entry) override;
    QCoro::Task<> startManualRecording() override;
    QCoro::Task<> stopRecordingAndTranscribe() override;
    QCoro::Task<> checkForAppUpdate() override;

Q_SIGNALS:
    // Every property has arrived once; the window can be built.
    void ready();
    void showRequested();
    void closeRequested();
    // The dictating process is gone or sent something unreadable.
    void linkLost();

private:
    template <typename T>
    T stored(const char *name) const
    {
        return m_values.value(QByteArray::fromRawData(name, qstrlen(name))).template value<T>();
    }
    void write(const char *name, const QVariant &value);
    void request(WindowLink::Request request, const QVariantList &arguments = {});
    void handle(const QByteArray &body);
    // Stores the values and announces each changed property's signal once.
    void apply(const WindowLink::PropertyValues &values);

    WindowLinkSocket m_link;
    QHash<QByteArray, QVariant> m_values;
    // Writes sent and not yet applied there, per property.
    QHash<QByteArray, int> m_pendingWrites;
    bool m_ready = false;
};
