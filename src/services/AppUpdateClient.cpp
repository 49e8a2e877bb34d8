#include "AppUpdateClient.h"

#include "models/QuorlaError.h"
#include "services/HttpExchange.h"
#include "support/PlatformError.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

PlatformError decodingError()
{
    return PlatformError(PlatformError::Domain::decoding,
                         QStringLiteral("The data couldn't be read because it isn't in the correct format."));
}

// A member that may be absent or null, but is a string when present.
std::optional<QString> optionalString(const QJsonObject &object, QStringView key)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    if (!value.isString())
        throw decodingError();
    return value.toString();
}

int leadingNumber(QStringView piece)
{
    qsizetype end = 0;
    while (end < piece.size()) {
        char32_t character = piece[end].unicode();
        qsizetype width = 1;
        if (piece[end].isHighSurrogate() && end + 1 < piece.size() && piece[end + 1].isLowSurrogate()) {
            character = QChar::surrogateToUcs4(piece[end], piece[end + 1]);
            width = 2;
        }
        if (!QChar::isNumber(character))
            break;
        end += width;
    }
    piece = piece.first(end);
    bool ok = false;
    const int number = piece.toInt(&ok, 10);
    // Numerals other than ASCII digits and numbers past int do not parse: they count as 0.
    return ok ? number : 0;
}

} // namespace

AppUpdateClient::AppUpdateClient(QNetworkAccessManager *network, QUrl latestReleaseURL,
                                 std::chrono::milliseconds transferTimeout)
    : m_network(network)
    , m_latestReleaseURL(std::move(latestReleaseURL))
    , m_transferTimeout(transferTimeout)
{
}

QCoro::Task<std::optional<AppUpdate>> AppUpdateClient::availableUpdate(QString currentVersion)
{
    QNetworkRequest request(m_latestReleaseURL);
    request.setTransferTimeout(int(m_transferTimeout.count()));
    request.setRawHeader("Accept", "application/json");
    const QByteArray verb("GET");
    const HttpReply reply = co_await sendHttpRequest(m_network, request, verb, QByteArray());
    if (!reply.statusCode || *reply.statusCode < 200 || *reply.statusCode > 299)
        throw QuorlaError(QuorlaError::Kind::invalidAPIResponse);

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(reply.body, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        throw decodingError();
    const QJsonObject release = document.object();
    const std::optional<QString> version = optionalString(release, u"version");
    const std::optional<QString> link = optionalString(release, u"downloadUrl");
    std::optional<QUrl> downloadUrl;
    if (link) {
        const QUrl url(*link, QUrl::StrictMode);
        if (!url.isValid() || url.isRelative())
            throw decodingError();
        downloadUrl = url;
    }

    const QString trimmedVersion = version.value_or(QString()).trimmed();
    if (trimmedVersion.isEmpty() || !downloadUrl)
        co_return std::nullopt;
    if (!isVersion(trimmedVersion, currentVersion))
        co_return std::nullopt;
    co_return AppUpdate{trimmedVersion, *downloadUrl};
}

bool AppUpdateClient::isVersion(const QString &candidate, const QString &current)
{
    const QList<int> candidateParts = normalizedVersionParts(candidate);
    const QList<int> currentParts = normalizedVersionParts(current);
    const qsizetype length = std::max(candidateParts.size(), currentParts.size());
    for (qsizetype i = 0; i < length; ++i) {
        const int mine = candidateParts.value(i, 0);
        const int theirs = currentParts.value(i, 0);
        if (mine != theirs)
            return mine > theirs;
    }
    return false;
}

QList<int> AppUpdateClient::normalizedVersionParts(const QString &version)
{
    QList<int> parts;
    for (const QStringView piece : QStringView(version).split(u'.', Qt::SkipEmptyParts))
        parts.append(leadingNumber(piece));
    return parts;
}
