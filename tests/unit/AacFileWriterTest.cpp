#include "AudioFileProbe.h"
#include "FileSizeLimit.h"
#include "ProcessMaps.h"

#include "platform/linux/AacEncoderModule.h"
#include "platform/linux/PeakLevel.h"
#include "platform/linux/QtAudioCapture.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QFile>
#include <functional>
#include <QLibraryInfo>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

namespace {

// Through the module, as Quorla records: its errors must reach us as PlatformError.
std::unique_ptr<AudioFileWriter> aacWriter(const QString &filePath)
{
    static AacEncoderModule module;
    return module.createWriter(filePath);
}

std::vector<std::int16_t> tone(double seconds, double amplitude)
{
    std::vector<std::int16_t> samples(std::size_t(seconds * AudioFileWriter::sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::int16_t(amplitude * 32767 * std::sin(2 * std::numbers::pi * 440 * double(i) / 16000));
    return samples;
}

// Feeds the writer in uneven pieces, as the audio server delivers them.
void writeInPieces(AudioFileWriter &writer, const std::vector<std::int16_t> &samples)
{
    for (std::size_t at = 0; at < samples.size(); at += 333)
        writer.write(std::span(samples).subspan(at, std::min<std::size_t>(333, samples.size() - at)));
}

TEST(AacFileWriter, writesAacLcMono16kHzAt32kbitInAnM4aWithTheIndexUpFront)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("tone.m4a");
    const auto samples = tone(3.0, 0.5);
    const auto writer = aacWriter(path);
    writeInPieces(*writer, samples);
    writer->finish();
    EXPECT_DOUBLE_EQ(writer->duration(), 3.0);

    const auto probe = AudioFileProbe::of(path);
    ASSERT_TRUE(probe);
    EXPECT_EQ(probe->codecName, "aac");
    EXPECT_EQ(probe->profile, "LC");
    EXPECT_EQ(probe->sampleRate, 16000);
    EXPECT_EQ(probe->channels, 1);
    EXPECT_EQ(probe->majorBrand, "M4A ");
    EXPECT_NEAR(probe->bitRate, 32000, 6000);
    EXPECT_NEAR(probe->duration, 3.0, 0.07); // one AAC frame is 64 ms
    EXPECT_TRUE(probe->moovBeforeMdat);

    const QString empty = directory.filePath("empty.m4a");
    aacWriter(empty)->finish();
    EXPECT_TRUE(QFile::exists(empty));
}

// However writing ends short of a finished file, nothing is left behind, and a file
// fault reaches the caller as a PlatformError of the file domain, across the module.
TEST(AacFileWriter, aFileThatCannotBeFinishedLeavesNothing)
{
    QTemporaryDir directory;
    const struct {
        const char *name;
        std::function<void(const QString &)> write;
        bool throwsFileError;
    } cases[] = {
        {"uncreatable", [](const QString &path) { aacWriter(path + "/missing/x.m4a"); }, true},
        {"aborted",
         [](const QString &path) {
             const auto writer = aacWriter(path);
             writeInPieces(*writer, tone(0.5, 0.3));
             writer->abort();
             writer->write(tone(0.1, 0.3)); // ignored after abort
         },
         false},
        {"dropped unfinished", [](const QString &path) { writeInPieces(*aacWriter(path), tone(0.5, 0.3)); }, false},
        {"disk full",
         [](const QString &path) {
             const FileSizeLimit limit(16 * 1024);
             const auto writer = aacWriter(path);
             writeInPieces(*writer, tone(20.0, 0.5));
             writer->finish();
         },
         true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = directory.filePath(QString::fromLatin1(c.name) + ".m4a");
        try {
            c.write(path);
            EXPECT_FALSE(c.throwsFileError);
        } catch (const std::exception &thrown) {
            const auto *error = dynamic_cast<const PlatformError *>(&thrown);
            ASSERT_TRUE(error) << thrown.what();
            EXPECT_TRUE(c.throwsFileError);
            EXPECT_EQ(error->domain(), PlatformError::Domain::file);
        }
        EXPECT_TRUE(QDir(directory.path()).entryList(QDir::Files).isEmpty());
    }
}

TEST(AacEncoderModule, aMissingOrForeignModuleFailsTheStartWithAnAudioErrorNamingIt)
{
    QTemporaryDir directory;
    const QString notALibrary = directory.filePath("libquorla_aac.so");
    QFile file(notALibrary);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("not a library") > 0);
    file.close();
    const QString modules[] = {
        directory.filePath("lib/quorla/libquorla_aac.so"),
        notALibrary,
        QLibraryInfo::path(QLibraryInfo::LibrariesPath) + "/libQt6Core.so.6", // no factory in it
    };
    for (const QString &module : modules) {
        for (const bool pressedFirst : {false, true}) { // loaded by the press, or by the start
            SCOPED_TRACE(module.toStdString() + (pressedFirst ? ", pressed first" : ""));
            QtAudioCapture capture(nullptr, module);
            if (pressedFirst)
                capture.prepare();
            const QString recording = directory.filePath("recording.m4a");
            try {
                capture.start(recording);
                ADD_FAILURE() << "expected a PlatformError";
            } catch (const PlatformError &error) {
                EXPECT_EQ(error.domain(), PlatformError::Domain::audio);
                EXPECT_TRUE(error.description().contains(module)) << error.description().toStdString();
            }
            EXPECT_FALSE(QFile::exists(recording));
        }
    }
}

TEST(AacEncoderModule, unloadsOnlyWithNoWriterLeftAndItsErrorsOutliveIt)
{
    // Another module object of this process (the tests above) would keep FFmpeg mapped.
    const bool mappedBefore = isMappedHere("libavcodec");
    QTemporaryDir directory;
    AacEncoderModule module;
    module.loadInBackground(); // as a press does; the first writer waits for it
    const QString uncreatable = directory.filePath("missing/x.m4a");
    std::exception_ptr kept;
    try {
        (void)module.createWriter(uncreatable);
    } catch (...) {
        kept = std::current_exception();
    }
    ASSERT_TRUE(kept);
    {
        const auto writer = module.createWriter(directory.filePath("first.m4a"));
        EXPECT_FALSE(module.unload()); // its code is still running the writer
        writeInPieces(*writer, tone(0.3, 0.3));
        writer->finish();
    }
    EXPECT_TRUE(module.unload());
    EXPECT_FALSE(module.isLoaded());
    if (!mappedBefore) {
        EXPECT_FALSE(isMappedHere("libavcodec"));
    }
    try {
        std::rethrow_exception(std::exchange(kept, nullptr));
    } catch (const PlatformError &error) {
        EXPECT_EQ(error.domain(), PlatformError::Domain::file);
        EXPECT_TRUE(error.description().contains(uncreatable)) << error.description().toStdString();
    }

    const QString second = directory.filePath("second.m4a");
    const auto writer = module.createWriter(second); // maps it again
    writeInPieces(*writer, tone(0.3, 0.3));
    writer->finish();
    const auto probe = AudioFileProbe::of(second);
    ASSERT_TRUE(probe);
    EXPECT_EQ(probe->codecName, "aac");
}

TEST(PeakLevel, isTheLoudestSampleInDecibelsFullScaleNeverBelowMinus160)
{
    const struct {
        std::vector<std::int16_t> samples;
        float decibels;
    } cases[] = {
        {{}, -160.0f}, {{0, 0, 0}, -160.0f}, {{0, -32768, 5}, 0.0f}, {{100, 16384, -200}, -6.0206f},
        {{-16384, 0}, -6.0206f}, {{1}, -90.309f}, {{-1, 0}, -90.309f},
    };
    for (const auto &c : cases)
        EXPECT_NEAR(peakPowerDecibels(c.samples), c.decibels, 0.001) << c.samples.size();
}

} // namespace
