#pragma once

#include "platform/linux/AudioFileWriter.h"

#include <QString>
#include <future>
#include <memory>

class QLibrary;

// The AAC encoder lives in a module of its own: FFmpeg and the hundred-odd libraries it
// pulls in cost about 20 MB once mapped, which a Quorla idling in the tray should not
// carry. The module is loaded on first use and can be unloaded again once no writer it
// made is left.
class AacEncoderModule
{
public:
    // Where the build and the installation both put it: <prefix>/lib/quorla beside bin/.
    [[nodiscard]] static QString defaultPath();

    // An empty path means defaultPath(), taken when loading.
    explicit AacEncoderModule(QString path = {});
    ~AacEncoderModule();

    // Starts loading on a thread of its own, so that the caller need not wait for the
    // hundred-odd libraries; does nothing when loaded or loading.
    void loadInBackground();
    // Does nothing once loaded; waits for a load in the background. Throws PlatformError
    // (audio) naming the file when it is missing or is not the encoder module.
    void load();
    [[nodiscard]] bool isLoaded() const { return m_create != nullptr; }
    // Refused (false) while a writer it made is alive; the next load() maps it again.
    bool unload();

    // Loads the module if needed, then creates the writer; throws like both. The
    // writer's errors are this program's own objects, so they may outlive the module.
    [[nodiscard]] std::unique_ptr<AudioFileWriter> createWriter(const QString &filePath);

private:
    struct Loaded {
        std::shared_ptr<QLibrary> library;
        CreateAudioFileWriter create = nullptr;
    };
    [[nodiscard]] static Loaded loadFrom(const QString &path);
    [[nodiscard]] QString resolvedPath() const;

    QString m_path;
    std::future<Loaded> m_loading;
    // Every writer holds a share, so the module cannot go while its code still runs.
    std::shared_ptr<QLibrary> m_library;
    CreateAudioFileWriter m_create = nullptr;
};
