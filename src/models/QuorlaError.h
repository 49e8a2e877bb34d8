#pragma once

#include <QString>
#include <exception>

struct PlatformWords;

// The user-facing error. Four kinds carry their own message; the others have fixed texts.
class QuorlaError : public std::exception
{
public:
    enum class Kind {
        apiFailure,
        keychainFailure,
        keychainLocked,
        hotkeyRegistrationFailed,
        textInsertionFailed,
        missingAPIKey,
        microphonePermissionDenied,
        accessibilityPermissionDenied,
        recordingFailed,
        noRecordingInProgress,
        noInsertionTarget,
        emptyTranscription,
        invalidAPIResponse,
    };

    static QuorlaError apiFailure(QString message) { return {Kind::apiFailure, std::move(message)}; }
    static QuorlaError keychainFailure(QString message) { return {Kind::keychainFailure, std::move(message)}; }
    static QuorlaError hotkeyRegistrationFailed(QString message) { return {Kind::hotkeyRegistrationFailed, std::move(message)}; }
    static QuorlaError textInsertionFailed(QString message) { return {Kind::textInsertionFailed, std::move(message)}; }
    QuorlaError(Kind kind)
        : m_kind(kind)
    {
    } // NOLINT: the fixed-text kinds convert implicitly

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] const QString &payload() const { return m_payload; }
    // The message shown to the user; three fixed texts name places or facilities of the platform.
    [[nodiscard]] QString errorDescription(const PlatformWords &words) const;
    const char *what() const noexcept override;

    friend bool operator==(const QuorlaError &a, const QuorlaError &b)
    {
        return a.m_kind == b.m_kind && a.m_payload == b.m_payload;
    }

private:
    QuorlaError(Kind kind, QString payload)
        : m_kind(kind)
        , m_payload(std::move(payload))
    {
    }

    Kind m_kind;
    QString m_payload;
    mutable QByteArray m_what;
};
