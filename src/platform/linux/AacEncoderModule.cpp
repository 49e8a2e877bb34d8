#include "AacEncoderModule.h"

#include "support/PlatformError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QThread>

namespace {

// An error thrown by the module has its vtable, and maybe its text, in the module's
// memory. The copy made here has neither, so it can be kept past an unload.
template <typename Operation>
decltype(auto) withOwnedErrors(Operation operation)
{
    try {
        return operation();
    } catch (const PlatformError &error) {
        const QString &text = error.description();
        throw PlatformError(error.domain(), QString(text.constData(), text.size()), error.code());
    }
}

// A writer made by the module, keeping the module loaded for as long as it lives.
class ModuleWriter final : public AudioFileWriter
{
public:
    ModuleWriter(std::shared_ptr<QLibrary> library, std::unique_ptr<AudioFileWriter> writer)
        : m_library(std::move(library))
        , m_writer(std::move(writer))
    {
    }

    void write(std::span<const std::int16_t> samples) override
    {
        withOwnedErrors([&] { m_writer->write(samples); });
    }
    void finish() override
    {
        withOwnedErrors([&] { m_writer->finish(); });
    }
    void abort() noexcept override { m_writer->abort(); }
    void setPcmTap(int sampleRate, std::function<void(std::span<const std::int16_t>)> deliver) override
    {
        withOwnedErrors([&] { m_writer->setPcmTap(sampleRate, std::move(deliver)); });
    }
    [[nodiscard]] std::int64_t samplesWritten() const override { return m_writer->samplesWritten(); }

private:
    // Declared first, released last: the writer is gone before the module may be.
    std::shared_ptr<QLibrary> m_library;
    std::unique_ptr<AudioFileWriter> m_writer;
};

} // namespace

QString AacEncoderModule::defaultPath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QStringLiteral("/../lib/quorla/" QUORLA_AAC_MODULE_FILE_NAME));
}

AacEncoderModule::AacEncoderModule(QString path)
    : m_path(std::move(path))
{
}

// A module still loaded here stays mapped until the process ends.
AacEncoderModule::~AacEncoderModule() = default;

QString AacEncoderModule::resolvedPath() const
{
    return m_path.isEmpty() ? defaultPath() : m_path;
}

AacEncoderModule::Loaded AacEncoderModule::loadFrom(const QString &path)
{
    const auto fail = [&path](const QString &reason) {
        throw PlatformError(PlatformError::Domain::audio,
                            QStringLiteral("The audio encoder \"%1\" couldn't be loaded: %2.").arg(path, reason));
    };
    // QLibrary would otherwise try other names and report the last of them.
    if (!QFileInfo(path).isFile())
        fail(QStringLiteral("the file is missing"));
    auto library = std::make_shared<QLibrary>(path);
    if (!library->load())
        fail(library->errorString());
    const auto create = reinterpret_cast<CreateAudioFileWriter>(library->resolve(createAacFileWriterSymbol));
    if (!create) {
        library->unload();
        fail(QStringLiteral("it has no %1").arg(QLatin1String(createAacFileWriterSymbol)));
    }
    return {std::move(library), create};
}

void AacEncoderModule::loadInBackground()
{
    if (m_create || m_loading.valid())
        return;
    // A thread that ends with the load: whatever the libraries set up for the thread
    // that loaded them is torn down while they are still mapped, never after an unload.
    m_loading = std::async(std::launch::async, [path = resolvedPath(), owner = QThread::currentThread()] {
        Loaded loaded = loadFrom(path);
        loaded.library->moveToThread(owner);
        return loaded;
    });
}

void AacEncoderModule::load()
{
    if (m_create)
        return;
    // The future goes at the end of the statement, and with it the loading thread.
    Loaded loaded = m_loading.valid() ? std::exchange(m_loading, {}).get() : loadFrom(resolvedPath());
    m_library = std::move(loaded.library);
    m_create = loaded.create;
}

bool AacEncoderModule::unload()
{
    if (m_loading.valid()) {
        try {
            load();
        } catch (const PlatformError &) {
            return true; // nothing was loaded
        }
    }
    if (!m_library)
        return true;
    if (m_library.use_count() > 1)
        return false;
    m_create = nullptr;
    m_library->unload();
    m_library.reset();
    return true;
}

std::unique_ptr<AudioFileWriter> AacEncoderModule::createWriter(const QString &filePath)
{
    load();
    std::unique_ptr<AudioFileWriter> writer(withOwnedErrors([&] { return m_create(filePath); }));
    return std::make_unique<ModuleWriter>(m_library, std::move(writer));
}
