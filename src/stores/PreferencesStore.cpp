#include "PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>
#include <cmath>

Q_LOGGING_CATEGORY(lcPreferences, "quorla.preferences")

namespace {

// JSON has no bytes: data values are kept as {"$data": "<base64>"} so that they
// stay distinguishable from strings and objects.
const QString dataTag = QStringLiteral("$data");

bool isDataWrapper(const QJsonValue &value)
{
    if (!value.isObject())
        return false;
    const QJsonObject object = value.toObject();
    return object.size() == 1 && object.value(dataTag).isString();
}

} // namespace

PreferencesStore::PreferencesStore(QString filePath)
    : m_filePath(std::move(filePath))
{
    load();
}

QString PreferencesStore::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
         + QStringLiteral("/Quorla/preferences.json");
}

void PreferencesStore::load()
{
    QFile file(m_filePath);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcPreferences) << "cannot read" << m_filePath << file.errorString();
        return;
    }
    const QByteArray bytes = file.readAll();
    file.close();

    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error == QJsonParseError::NoError && document.isObject()) {
        m_values = document.object();
        return;
    }
    // Keep the unreadable file for the user instead of overwriting it on the next change.
    const QString aside = m_filePath + QStringLiteral(".corrupt");
    QFile::remove(aside);
    if (!QFile::rename(m_filePath, aside))
        qCWarning(lcPreferences) << "cannot move aside" << m_filePath;
    qCWarning(lcPreferences) << "preferences were not a JSON object; kept as" << aside;
}

void PreferencesStore::save() const
{
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    QSaveFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly)) {
        qCWarning(lcPreferences) << "cannot write" << m_filePath << file.errorString();
        return;
    }
    file.write(QJsonDocument(m_values).toJson(QJsonDocument::Indented));
    if (!file.commit())
        qCWarning(lcPreferences) << "cannot write" << m_filePath << file.errorString();
}

void PreferencesStore::set(const QString &key, const QJsonValue &value)
{
    m_values.insert(key, value);
    save();
}

std::optional<bool> PreferencesStore::boolValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<qint64> PreferencesStore::integerValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (std::trunc(number) != number)
        return std::nullopt;
    return value.toInteger();
}

std::optional<QString> PreferencesStore::stringValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QStringList> PreferencesStore::stringListValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isArray())
        return std::nullopt;
    QStringList list;
    for (const QJsonValue element : value.toArray()) {
        if (!element.isString())
            return std::nullopt;
        list.append(element.toString());
    }
    return list;
}

std::optional<QByteArray> PreferencesStore::dataValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!isDataWrapper(value))
        return std::nullopt;
    auto decoded = QByteArray::fromBase64Encoding(value.toObject().value(dataTag).toString().toLatin1(),
                                                  QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(*decoded) : std::nullopt;
}

std::optional<QJsonObject> PreferencesStore::objectValue(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isObject() || isDataWrapper(value))
        return std::nullopt;
    return value.toObject();
}

void PreferencesStore::setBool(const QString &key, bool value)
{
    set(key, value);
}
void PreferencesStore::setInteger(const QString &key, qint64 value)
{
    set(key, value);
}
void PreferencesStore::setString(const QString &key, const QString &value)
{
    set(key, value);
}

void PreferencesStore::setStringList(const QString &key, const QStringList &value)
{
    set(key, QJsonArray::fromStringList(value));
}

void PreferencesStore::setData(const QString &key, const QByteArray &value)
{
    set(key, QJsonObject{{dataTag, QString::fromLatin1(value.toBase64())}});
}

void PreferencesStore::setObject(const QString &key, const QJsonObject &value)
{
    set(key, value);
}

void PreferencesStore::remove(const QString &key)
{
    if (!m_values.contains(key))
        return;
    m_values.remove(key);
    save();
}
