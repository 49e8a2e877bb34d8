#pragma once

#include <QString>
#include <optional>

// What ffprobe reads from an audio file, and whether its index (moov) comes before
// the audio data (mdat), as a file that streams to the speech service should have it.
struct AudioFileProbe {
    QString majorBrand;
    QString codecName;
    QString profile;
    int sampleRate = 0;
    int channels = 0;
    double bitRate = 0;
    double duration = 0;
    bool moovBeforeMdat = false;

    // Empty when ffprobe cannot read the file.
    static std::optional<AudioFileProbe> of(const QString &filePath);
};
