// Live mode: the speech goes to the service while it is recorded.
#include "AppModel.h"

#include "models/CustomDictionary.h"
#include "models/TranscriptionPrompt.h"
#include "services/AudioRecorder.h"
#include "services/LiveTranscription.h"
#include "services/ServiceAddress.h"

void AppModel::warmUpLiveTranscription()
{
    // Without a key read already, the socket opens at the start, once the key is read.
    const std::optional<QString> apiKey = m_apiKey.knownKey();
    if (m_transcriptionMode != TranscriptionMode::live || !apiKey)
        return;
    if (!m_warmLiveTranscription) {
        m_warmLiveTranscription = std::make_shared<LiveTranscription>();
        m_warmLiveTranscription->open(ServiceAddress::configuredAPIBaseURL(*m_services.preferences), *apiKey);
    }
    m_liveTranscriptionRelease.start(AudioRecorder::longestWarmUp);
}

std::shared_ptr<LiveTranscription> AppModel::liveTranscriptionFor(const DictationSession &session)
{
    m_liveTranscriptionRelease.stop();
    std::shared_ptr<LiveTranscription> live = std::exchange(m_warmLiveTranscription, nullptr);
    if (!live) {
        live = std::make_shared<LiveTranscription>();
        live->open(ServiceAddress::configuredAPIBaseURL(*m_services.preferences), session.apiKey);
    }
    LiveTranscriptionSettings settings;
    settings.model = transcriptionModelName(TranscriptionMode::live);
    if (session.transcriptionLanguage)
        settings.languageCode = session.transcriptionLanguage->code;
    settings.prompt = transcriptionPrompt(customDictionaryGuidance(m_customDictionaryEntries));
    live->configure(settings);
    return live;
}
