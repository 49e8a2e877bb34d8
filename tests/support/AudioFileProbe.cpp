#include "AudioFileProbe.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtEndian>

namespace {

// The top-level boxes of an MPEG-4 file in order: each starts with a 32-bit size and a
// four-character type.
bool indexComesFirst(const QString &filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    qsizetype offset = 0;
    while (offset + 8 <= bytes.size()) {
        const quint32 size = qFromBigEndian<quint32>(bytes.constData() + offset);
        const QByteArray type = bytes.mid(offset + 4, 4);
        if (type == "moov")
            return true;
        if (type == "mdat" || size < 8)
            return false;
        offset += size;
    }
    return false;
}

} // namespace

std::optional<AudioFileProbe> AudioFileProbe::of(const QString &filePath)
{
    QProcess ffprobe;
    ffprobe.start(QStringLiteral("ffprobe"), {"-v", "error", "-of", "json", "-show_format", "-show_streams", filePath});
    if (!ffprobe.waitForFinished(20000) || ffprobe.exitCode() != 0)
        return std::nullopt;
    const QJsonObject root = QJsonDocument::fromJson(ffprobe.readAllStandardOutput()).object();
    const QJsonArray streams = root.value(QStringLiteral("streams")).toArray();
    if (streams.size() != 1)
        return std::nullopt;
    const QJsonObject stream = streams.first().toObject();
    const QJsonObject format = root.value(QStringLiteral("format")).toObject();
    AudioFileProbe probe;
    probe.majorBrand = format.value(QStringLiteral("tags")).toObject().value(QStringLiteral("major_brand")).toString();
    probe.codecName = stream.value(QStringLiteral("codec_name")).toString();
    probe.profile = stream.value(QStringLiteral("profile")).toString();
    probe.sampleRate = stream.value(QStringLiteral("sample_rate")).toString().toInt();
    probe.channels = stream.value(QStringLiteral("channels")).toInt();
    probe.bitRate = stream.value(QStringLiteral("bit_rate")).toString().toDouble();
    probe.duration = format.value(QStringLiteral("duration")).toString().toDouble();
    probe.moovBeforeMdat = indexComesFirst(filePath);
    return probe;
}
