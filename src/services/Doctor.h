#pragma once

#include <QCoro/QCoroTask>
#include <QJsonArray>
#include <QList>
#include <QString>
#include <chrono>
#include <memory>

class AudioCapture;
class CredentialStore;
class DesktopProbe;
class QNetworkAccessManager;

// One line of `quorla doctor`: what was found and, unless all is well, how to fix it.
struct DoctorCheck {
    enum class Status { ok,
                        warn,
                        fail };

    Status status = Status::ok;
    QString what;
    QString fix;

    friend bool operator==(const DoctorCheck &, const DoctorCheck &) = default;
};

// Checks everything a dictation needs, in the order a dictation meets it: preferences,
// session and trigger, text insertion, microphone, keyring and key, service. Sends no
// audio anywhere and never prints the key.
class Doctor
{
public:
    struct Backends {
        std::shared_ptr<DesktopProbe> desktop;
        std::shared_ptr<CredentialStore> credentials;
        std::shared_ptr<AudioCapture> audio;
    };
    struct Options {
        QString preferencesPath;
        std::chrono::milliseconds listening{1000};
        int requestTimeoutMs = 10000;
    };

    Doctor(Backends backends, QNetworkAccessManager *network, Options options);

    QCoro::Task<QList<DoctorCheck>> run();

    // No check failed: dictation can work, perhaps with less comfort.
    [[nodiscard]] static bool dictationCanWork(const QList<DoctorCheck> &checks);
    // "ok    what" or "fail  what  — fix", one line per check.
    [[nodiscard]] static QString text(const QList<DoctorCheck> &checks);
    // [{"status": "ok", "what": ..., "fix": ...}, ...]
    [[nodiscard]] static QJsonArray json(const QList<DoctorCheck> &checks);
    [[nodiscard]] static QString statusName(DoctorCheck::Status status);

private:
    QCoro::Task<DoctorCheck> microphoneLevel();
    QCoro::Task<QList<DoctorCheck>> serviceChecks(QString apiKey, QString preferenceAddress);

    Backends m_backends;
    QNetworkAccessManager *m_network;
    Options m_options;
};
