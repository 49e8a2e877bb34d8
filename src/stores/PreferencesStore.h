#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

// The user-defaults store: one JSON object in a file, rewritten atomically on every
// change. Typed reads return absent both for a missing key and for a value of another
// type; contains() tells the two apart.
class PreferencesStore
{
public:
    // Loads filePath. A file that is not a JSON object is moved aside to
    // "<file>.corrupt" and the store starts empty.
    explicit PreferencesStore(QString filePath);
    PreferencesStore(const PreferencesStore &) = delete;
    PreferencesStore &operator=(const PreferencesStore &) = delete;

    // $XDG_CONFIG_HOME/Quorla/preferences.json (~/.config/... by default).
    static QString defaultFilePath();

    [[nodiscard]] const QString &filePath() const { return m_filePath; }
    [[nodiscard]] bool contains(const QString &key) const { return m_values.contains(key); }

    [[nodiscard]] std::optional<bool> boolValue(const QString &key) const;
    [[nodiscard]] std::optional<qint64> integerValue(const QString &key) const;
    [[nodiscard]] std::optional<QString> stringValue(const QString &key) const;
    [[nodiscard]] std::optional<QStringList> stringListValue(const QString &key) const;
    [[nodiscard]] std::optional<QByteArray> dataValue(const QString &key) const;
    [[nodiscard]] std::optional<QJsonObject> objectValue(const QString &key) const;

    void setBool(const QString &key, bool value);
    void setInteger(const QString &key, qint64 value);
    void setString(const QString &key, const QString &value);
    void setStringList(const QString &key, const QStringList &value);
    void setData(const QString &key, const QByteArray &value);
    void setObject(const QString &key, const QJsonObject &value);
    void remove(const QString &key);

private:
    void load();
    void set(const QString &key, const QJsonValue &value);
    void save() const;

    QString m_filePath;
    QJsonObject m_values;
};
