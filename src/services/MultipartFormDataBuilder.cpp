#include "MultipartFormDataBuilder.h"

#include <QUuid>

namespace {
constexpr char crlf[] = "\r\n";
}

MultipartFormDataBuilder::MultipartFormDataBuilder(QString boundary)
    : m_boundary(std::move(boundary))
{
}

QString MultipartFormDataBuilder::freshBoundary()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

void MultipartFormDataBuilder::addField(const QString &name, const QString &value)
{
    m_body += "--" + m_boundary.toUtf8() + crlf;
    m_body += "Content-Disposition: form-data; name=\"" + name.toUtf8() + "\"" + crlf + crlf;
    m_body += value.toUtf8() + crlf;
}

void MultipartFormDataBuilder::addFile(const QString &name, const QString &fileName, const QByteArray &contentType,
                                       const QByteArray &contents)
{
    m_body.reserve(m_body.size() + contents.size() + 256);
    m_body += "--" + m_boundary.toUtf8() + crlf;
    // A quote or line break in a file name would end the header early: escaped as browsers do.
    QByteArray escapedName = fileName.toUtf8();
    escapedName.replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A");
    m_body += "Content-Disposition: form-data; name=\"" + name.toUtf8() + "\"; filename=\"" + escapedName + "\""
            + crlf;
    m_body += "Content-Type: " + contentType + crlf + crlf;
    m_body += contents;
    m_body += crlf;
}

void MultipartFormDataBuilder::finish()
{
    m_body += "--" + m_boundary.toUtf8() + "--" + crlf;
}
