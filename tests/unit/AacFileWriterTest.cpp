#include "AudioFileProbe.h"
#include "FileSizeLimit.h"
#include "ProcessMaps.h"

#include "platform/linux/AacEncoderModule.h"
#include "platform/linux/PeakLevel.h"
#include "platform/linux/QtAudioCapture.h"
#include "support/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>
#include <cmath>
#include <functional>
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

// A 440 Hz tone, fed in uneven pieces as the audio server delivers them.
void writeTone(AudioFileWriter &writer, double seconds, double amplitude = 0.3)
{
    std::vector<std::int16_t> samples(std::size_t(seconds * AudioFileWriter::sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::int16_t(amplitude * 32767 * std::sin(2 * std::numbers::pi * 440 * double(i) / 16000));
    for (std::size_t at = 0; at < samples.size(); at += 333)
        writer.write(std::span(samples).subspan(at, std::min<std::size_t>(333, samples.size() - at)));
}

std::optional<PlatformError::Domain> domainOfFailure(const std::function<void()> &action)
{
    try {
        action();
    } catch (const PlatformError &error) {
        return error.domain();
    }
    return std::nullopt;
}

TEST(AacFileWriter, writesAacLcMono16kHzAt32kbitInAnM4aWithTheIndexUpFront)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("tone.m4a");
    const auto writer = aacWriter(path);
    writeTone(*writer, 3.0, 0.5);
    writer->finish();
    EXPECT_DOUBLE_EQ(writer->duration(), 3.0);
    const auto probe = probedAudioFile(path);
    EXPECT_EQ(QStringList({probe.value("codec_name"), probe.value("profile"), probe.value("TAG:major_brand"),
                           probe.value("sample_rate"), probe.value("channels"), probe.value("index")}),
              QStringList({"aac", "LC", "M4A ", "16000", "1", "first"}));
    EXPECT_NEAR(probe.value("bit_rate").toDouble(), 32000, 6000);
    aacWriter(directory.filePath("empty.m4a"))->finish();
    EXPECT_TRUE(QFile::exists(directory.filePath("empty.m4a")));
}

// However writing ends short of a finished file, nothing is left behind, and a file
// fault reaches the caller as a PlatformError of the file domain, across the module.
TEST(AacFileWriter, aFileThatCannotBeFinishedLeavesNothing)
{
    QTemporaryDir directory;
    const std::pair<const char *, std::function<void(const QString &)>> cases[] = {
        {"uncreatable", [](const QString &path) { aacWriter(path + "/missing/x.m4a"); }},
        {"aborted", [](const QString &path) {
             const auto writer = aacWriter(path);
             writeTone(*writer, 0.5);
             writer->abort();
             writeTone(*writer, 0.1); // ignored after abort
         }},
        {"dropped unfinished", [](const QString &path) { writeTone(*aacWriter(path), 0.5); }},
        {"disk full", [](const QString &path) {
             const FileSizeLimit limit(16 * 1024);
             const auto writer = aacWriter(path);
             writeTone(*writer, 20.0, 0.5);
             writer->finish();
         }},
    };
    for (const auto &[name, write] : cases) {
        const bool fileFault = name == std::string_view("uncreatable") || name == std::string_view("disk full");
        EXPECT_EQ(domainOfFailure([&] { write(directory.filePath(QString::fromLatin1(name) + ".m4a")); }),
                  fileFault ? std::optional(PlatformError::Domain::file) : std::nullopt)
            << name;
        EXPECT_TRUE(QDir(directory.path()).entryList(QDir::Files).isEmpty()) << name;
    }
}

TEST(AacEncoderModule, aMissingOrForeignModuleFailsTheStartWithAnAudioErrorNamingIt)
{
    QTemporaryDir directory;
    const QString notALibrary = directory.filePath("libquorla_aac.so");
    QFile file(notALibrary);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("not a library") > 0);
    file.close();
    const std::pair<QString, bool> cases[] = {
        // the module, and whether a press loads it before the start
        {directory.filePath("lib/quorla/libquorla_aac.so"), false},
        {notALibrary, true},
        {QLibraryInfo::path(QLibraryInfo::LibrariesPath) + "/libQt6Core.so.6", false}, // no factory in it
    };
    for (const auto &[module, pressedFirst] : cases) {
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

TEST(AacEncoderModule, unloadsOnlyWithNoWriterLeftAndItsErrorsOutliveIt)
{
    // Another module object of this process (the tests above) would keep FFmpeg mapped.
    const bool mappedBefore = isMappedHere("libavcodec");
    QTemporaryDir directory;
    AacEncoderModule module;
    module.loadInBackground(); // as a press does; the first writer waits for it
    std::exception_ptr kept;
    try {
        (void)module.createWriter(directory.filePath("missing/x.m4a"));
    } catch (...) {
        kept = std::current_exception();
    }
    {
        const auto writer = module.createWriter(directory.filePath("first.m4a"));
        EXPECT_FALSE(module.unload()); // its code is still running the writer
        writeTone(*writer, 0.3);
        writer->finish();
    }
    EXPECT_TRUE(module.unload());
    EXPECT_TRUE(mappedBefore || !isMappedHere("libavcodec"));
    EXPECT_EQ(domainOfFailure([&] { std::rethrow_exception(kept); }), PlatformError::Domain::file);

    const auto writer = module.createWriter(directory.filePath("second.m4a")); // maps it again
    writeTone(*writer, 0.3);
    writer->finish();
    EXPECT_EQ(probedAudioFile(directory.filePath("second.m4a")).value("codec_name"), "aac");
}

TEST(PeakLevel, isTheLoudestSampleInDecibelsFullScaleNeverBelowMinus160)
{
    const std::pair<std::vector<std::int16_t>, float> cases[] = {
        {{}, -160.0f},
        {{0, 0}, -160.0f},
        {{0, -32768, 5}, 0.0f},
        {{100, 16384, -200}, -6.0206f},
        {{-1, 0}, -90.309f},
    };
    for (const auto &[samples, decibels] : cases)
        EXPECT_NEAR(peakPowerDecibels(samples), decibels, 0.001) << samples.size();
}

} // namespace
