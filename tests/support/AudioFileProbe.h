#pragma once

#include <QMap>
#include <QString>

// What ffprobe reads from an audio file's one stream and its container (codec_name,
// profile, sample_rate, channels, bit_rate, duration, TAG:major_brand), plus "index":
// "first" when the index (moov) precedes the audio data (mdat), as a file that streams
// to the speech service should have it. Empty when ffprobe cannot read the file.
QMap<QString, QString> probedAudioFile(const QString &filePath);
