#pragma once

#include "platform/linux/AudioFileWriter.h"

#include <QString>
#include <memory>

// The AAC encoder lives in a module of its own: FFmpeg and the hundred-odd libraries it
// pulls in cost about 25 MB once mapped, which a Quorla idling in the tray should not
// carry. The module is loaded on first use and then stays loaded for the process.
class AacEncoderModule
{
public:
    // Where the build and the installation both put it: <prefix>/lib/quorla beside bin/.
    [[nodiscard]] static QString defaultPath();

    // An empty path means defaultPath(), taken when loading.
    explicit AacEncoderModule(QString path = {});

    // Does nothing once loaded. Throws PlatformError (audio) naming the file when it is
    // missing or is not the encoder module.
    void load();
    [[nodiscard]] bool isLoaded() const { return m_create != nullptr; }

    // Loads the module if needed, then creates the writer; throws like both.
    [[nodiscard]] std::unique_ptr<AudioFileWriter> createWriter(const QString &filePath);

private:
    QString m_path;
    CreateAudioFileWriter m_create = nullptr;
};
