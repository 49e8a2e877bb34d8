#pragma once

#include "models/QuorlaError.h"
#include "platform/AudioCapture.h"

#include <QFile>
#include <optional>

// Writes a small file per recording and reports the duration and level a test sets.
class FakeAudioCapture : public AudioCapture
{
public:
    PermissionState permissionState() override { return permission; }
    QCoro::Task<bool> requestPermission() override { co_return permission == PermissionState::authorized; }
    void prepare() override { prepared = prepared || !recording; }
    void release() override { prepared = prepared && recording; }
    void start(const QString &filePath) override
    {
        if (startFailure)
            throw *startFailure;
        QFile file(filePath);
        (void)(file.open(QIODevice::WriteOnly) && file.write("fake m4a"));
        currentPath = filePath;
        std::tie(recording, prepared, fault) = std::tuple(true, false, nullptr);
    }
    void setPcmTap(PcmTap tap) override { pcmTap = std::move(tap); }
    void endPcmTap() override { pcmTap = {}; }
    double currentTime() const override { return duration; }
    float takePeakPower() override { return peakPower; }
    void stop() override
    {
        recording = false;
        if (fault) {
            QFile::remove(currentPath);
            std::rethrow_exception(std::exchange(fault, nullptr));
        }
    }
    std::exception_ptr failure() const override { return fault; }

    // Breaks the running recording as a vanished device or a full disk would.
    void breakRecording(std::exception_ptr error)
    {
        fault = std::move(error);
        recording = false;
        QFile::remove(currentPath);
    }

    PermissionState permission = PermissionState::authorized;
    std::optional<QuorlaError> startFailure;
    double duration = 2.0;
    float peakPower = -10.0f;
    QString currentPath;
    bool recording = false;
    bool prepared = false;
    std::exception_ptr fault;
    PcmTap pcmTap;
};
