#include "AudioFileProbe.h"

#include <QFile>
#include <QProcess>
#include <QtEndian>

QMap<QString, QString> probedAudioFile(const QString &filePath)
{
    QProcess ffprobe;
    ffprobe.start(QStringLiteral("ffprobe"), {"-v", "error", "-of", "default=nw=1", "-show_entries",
                                              "stream=codec_name,profile,sample_rate,channels,bit_rate:format=duration:format_tags=major_brand",
                                              filePath});
    QMap<QString, QString> probe;
    if (!ffprobe.waitForFinished(20000) || ffprobe.exitCode() != 0)
        return probe;
    for (const QString &line : QString::fromUtf8(ffprobe.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts))
        probe.insert(line.section(u'=', 0, 0), line.section(u'=', 1));
    // The top-level boxes in order: each starts with a 32-bit size and a four-character type.
    QFile file(filePath);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    for (qsizetype offset = 0; offset + 8 <= bytes.size();) {
        const QByteArray type = bytes.mid(offset + 4, 4);
        if (type == "moov" || type == "mdat") {
            probe.insert(QStringLiteral("index"), type == "moov" ? QStringLiteral("first") : QStringLiteral("last"));
            break;
        }
        offset += qMax<quint32>(8, qFromBigEndian<quint32>(bytes.constData() + offset));
    }
    return probe;
}
