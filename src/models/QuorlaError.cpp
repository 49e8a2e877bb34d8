#include "QuorlaError.h"

#include "support/PlatformWords.h"

QString QuorlaError::errorDescription(const PlatformWords &words) const
{
    switch (m_kind) {
    case Kind::apiFailure:
    case Kind::keychainFailure:
    case Kind::hotkeyRegistrationFailed:
    case Kind::textInsertionFailed:
        return m_payload;
    case Kind::keychainLocked:
        return words.credentialStoreLocked;
    case Kind::missingAPIKey:
        return QStringLiteral("Add your OpenAI API key first.");
    case Kind::microphonePermissionDenied:
        return words.microphonePermissionDenied;
    case Kind::accessibilityPermissionDenied:
        return words.accessibilityPermissionDenied;
    case Kind::recordingFailed:
        return QStringLiteral("The app couldn't start recording from the microphone.");
    case Kind::noRecordingInProgress:
        return QStringLiteral("There isn't an active recording to stop.");
    case Kind::noInsertionTarget:
        return QStringLiteral("Focus a text field in another app before starting global dictation.");
    case Kind::emptyTranscription:
        return QStringLiteral("OpenAI returned an empty transcription.");
    case Kind::invalidAPIResponse:
        return QStringLiteral("OpenAI returned a response the app couldn't read.");
    }
    return {};
}

const char *QuorlaError::what() const noexcept
{
    if (m_what.isEmpty())
        m_what = errorDescription(PlatformWords::current()).toUtf8();
    return m_what.constData();
}
