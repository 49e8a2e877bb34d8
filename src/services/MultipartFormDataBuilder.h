#pragma once

#include <QByteArray>
#include <QString>

// A multipart/form-data body built in memory, byte for byte as the transcription
// endpoint expects it: text parts carry no Content-Type of their own.
class MultipartFormDataBuilder
{
public:
    explicit MultipartFormDataBuilder(QString boundary);

    // A boundary for one request: a fresh UUID, upper case, no braces.
    static QString freshBoundary();

    [[nodiscard]] const QString &boundary() const { return m_boundary; }
    [[nodiscard]] const QByteArray &body() const { return m_body; }

    void addField(const QString &name, const QString &value);
    void addFile(const QString &name, const QString &fileName, const QByteArray &contentType,
                 const QByteArray &contents);
    // Writes the closing delimiter; nothing may be added after it.
    void finish();

private:
    QString m_boundary;
    QByteArray m_body;
};
