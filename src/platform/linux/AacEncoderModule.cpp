#include "AacEncoderModule.h"

#include "support/PlatformError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

QString AacEncoderModule::defaultPath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QStringLiteral("/../lib/quorla/" QUORLA_AAC_MODULE_FILE_NAME));
}

AacEncoderModule::AacEncoderModule(QString path)
    : m_path(std::move(path))
{
}

void AacEncoderModule::load()
{
    if (m_create)
        return;
    const QString path = m_path.isEmpty() ? defaultPath() : m_path;
    const auto fail = [&path](const QString &reason) {
        throw PlatformError(PlatformError::Domain::audio,
                            QStringLiteral("The audio encoder \"%1\" couldn't be loaded: %2.").arg(path, reason));
    };
    // QLibrary would otherwise try other names and report the last of them.
    if (!QFileInfo(path).isFile())
        fail(QStringLiteral("the file is missing"));
    // Never unloaded: the writers it creates run its code until they are gone.
    QLibrary library(path);
    if (!library.load())
        fail(library.errorString());
    const auto create = reinterpret_cast<CreateAudioFileWriter>(library.resolve(createAacFileWriterSymbol));
    if (!create) {
        library.unload();
        fail(QStringLiteral("it has no %1").arg(QLatin1String(createAacFileWriterSymbol)));
    }
    m_create = create;
}

std::unique_ptr<AudioFileWriter> AacEncoderModule::createWriter(const QString &filePath)
{
    load();
    return std::unique_ptr<AudioFileWriter>(m_create(filePath));
}
