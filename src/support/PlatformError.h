#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

// An error of the platform itself (transport, file, decoding) carrying its own
// localized description, shown to the user as it stands.
class PlatformError : public std::exception
{
public:
    enum class Domain { network,
                        file,
                        decoding,
                        audio,
                        other };

    PlatformError(Domain domain, QString description, int code = 0)
        : m_domain(domain)
        , m_description(std::move(description))
        , m_code(code)
        , m_what(m_description.toUtf8())
    {
    }

    [[nodiscard]] Domain domain() const { return m_domain; }
    [[nodiscard]] const QString &description() const { return m_description; }
    [[nodiscard]] int code() const { return m_code; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    Domain m_domain;
    QString m_description;
    int m_code;
    QByteArray m_what;
};
