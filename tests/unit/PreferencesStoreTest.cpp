#include "stores/PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class PreferencesStoreTest : public ::testing::Test
{
protected:
    QString path() const { return directory.filePath(QStringLiteral("Quorla/preferences.json")); }

    void writeFile(const QByteArray &bytes) const
    {
        QDir().mkpath(directory.filePath(QStringLiteral("Quorla")));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir directory;
};

TEST_F(PreferencesStoreTest, valuesSurviveARestartWithTheirTypes)
{
    {
        PreferencesStore store(path());
        store.setBool(QStringLiteral("flag"), true);
        store.setInteger(QStringLiteral("count"), 9'007'199'254'740'993LL); // beyond a double's exact range
        store.setString(QStringLiteral("text"), QStringLiteral("  spaced\n"));
        store.setStringList(QStringLiteral("list"), {QStringLiteral("a"), QStringLiteral("b")});
        store.setData(QStringLiteral("data"), QByteArray("\x00\xff{json}", 8));
        store.setObject(QStringLiteral("object"), {{QStringLiteral("k"), 1}});
    }
    PreferencesStore store(path());
    EXPECT_EQ(store.boolValue(QStringLiteral("flag")), true);
    EXPECT_EQ(store.integerValue(QStringLiteral("count")), 9'007'199'254'740'993LL);
    EXPECT_EQ(store.stringValue(QStringLiteral("text")), QStringLiteral("  spaced\n"));
    EXPECT_EQ(store.stringListValue(QStringLiteral("list")), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(store.dataValue(QStringLiteral("data")), QByteArray("\x00\xff{json}", 8));
    EXPECT_EQ(store.objectValue(QStringLiteral("object")), QJsonObject({{QStringLiteral("k"), 1}}));
}

TEST_F(PreferencesStoreTest, aValueOfAnotherTypeIsToldApartFromAMissingKey)
{
    writeFile(R"({"flag": "yes", "count": 1.5, "text": 3, "list": ["a", 2], "data": "aGk=", "object": [1]})");
    PreferencesStore store(path());
    for (const char *key : {"flag", "count", "text", "list", "data", "object"})
        EXPECT_TRUE(store.contains(QString::fromLatin1(key))) << key;
    EXPECT_FALSE(store.contains(QStringLiteral("missing")));
    EXPECT_EQ(store.boolValue(QStringLiteral("flag")), std::nullopt);
    EXPECT_EQ(store.integerValue(QStringLiteral("count")), std::nullopt);
    EXPECT_EQ(store.stringValue(QStringLiteral("text")), std::nullopt);
    EXPECT_EQ(store.stringListValue(QStringLiteral("list")), std::nullopt);
    EXPECT_EQ(store.dataValue(QStringLiteral("data")), std::nullopt);
    EXPECT_EQ(store.objectValue(QStringLiteral("object")), std::nullopt);
}

TEST_F(PreferencesStoreTest, dataIsNeitherAStringNorAnObject)
{
    PreferencesStore store(path());
    store.setData(QStringLiteral("data"), "bytes");
    EXPECT_EQ(store.stringValue(QStringLiteral("data")), std::nullopt);
    EXPECT_EQ(store.objectValue(QStringLiteral("data")), std::nullopt);
}

TEST_F(PreferencesStoreTest, removeDeletesTheKeyOnDisk)
{
    {
        PreferencesStore store(path());
        store.setString(QStringLiteral("text"), QStringLiteral("x"));
        store.remove(QStringLiteral("text"));
        store.remove(QStringLiteral("never-there"));
    }
    EXPECT_FALSE(PreferencesStore(path()).contains(QStringLiteral("text")));
}

TEST_F(PreferencesStoreTest, unreadableFilesAreKeptAsideAndDefaultsUsed)
{
    for (const QByteArray &bytes : {QByteArray("{not json"), QByteArray("[1, 2]"), QByteArray("\"text\""),
                                    QByteArray("\xff\xfe\x00")}) {
        writeFile(bytes);
        QFile::remove(path() + QStringLiteral(".corrupt"));
        PreferencesStore store(path());
        EXPECT_FALSE(store.contains(QStringLiteral("flag"))) << bytes.toStdString();
        QFile aside(path() + QStringLiteral(".corrupt"));
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly)) << bytes.toStdString();
        EXPECT_EQ(aside.readAll(), bytes);
        store.setBool(QStringLiteral("flag"), true);
        EXPECT_EQ(PreferencesStore(path()).boolValue(QStringLiteral("flag")), true);
    }
}

TEST_F(PreferencesStoreTest, anEmptyOrMissingFileStartsEmptyWithoutAnythingKeptAside)
{
    PreferencesStore missing(path());
    EXPECT_FALSE(QFile::exists(path()));
    writeFile("{}");
    PreferencesStore empty(path());
    EXPECT_FALSE(QFile::exists(path() + QStringLiteral(".corrupt")));
}

TEST_F(PreferencesStoreTest, aWriteLeavesNoTemporaryFileBehind)
{
    PreferencesStore store(path());
    store.setBool(QStringLiteral("flag"), true);
    const QStringList files = QDir(directory.filePath(QStringLiteral("Quorla"))).entryList(QDir::Files | QDir::Hidden);
    EXPECT_EQ(files, QStringList{QStringLiteral("preferences.json")});
}

} // namespace
