#include "ModelTest.h"

#include <QTemporaryDir>

namespace {

class PreferencesStoreTest : public ::testing::Test
{
protected:
    QString path() const { return directory.filePath("Quorla/preferences.json"); }

    void writeFile(const QByteArray &bytes) const { writeTestFile(path(), bytes); }

    QTemporaryDir directory;
};

TEST_F(PreferencesStoreTest, valuesSurviveARestartWithTheirTypes)
{
    {
        PreferencesStore store(path());
        store.setBool("flag", true);
        store.setInteger("count", 9'007'199'254'740'993LL); // beyond a double's exact range
        store.setString("text", "  spaced\n");
        store.setStringList("list", {"a", "b"});
        store.setData("data", QByteArray("\x00\xff{json}", 8));
        store.setObject("object", {{"k", 1}});
    }
    PreferencesStore store(path());
    EXPECT_EQ(store.boolValue("flag"), true);
    EXPECT_EQ(store.integerValue("count"), 9'007'199'254'740'993LL);
    EXPECT_EQ(store.stringValue("text"), "  spaced\n");
    EXPECT_EQ(store.stringListValue("list"), QStringList({"a", "b"}));
    EXPECT_EQ(store.dataValue("data"), QByteArray("\x00\xff{json}", 8));
    EXPECT_EQ(store.objectValue("object"), QJsonObject({{"k", 1}}));
}

TEST_F(PreferencesStoreTest, aValueOfAnotherTypeIsToldApartFromAMissingKey)
{
    writeFile(R"({"flag": "yes", "count": 1.5, "text": 3, "list": ["a", 2], "data": "aGk=", "object": [1]})");
    PreferencesStore store(path());
    for (const char *key : {"flag", "count", "text", "list", "data", "object"})
        EXPECT_TRUE(store.contains(QString::fromLatin1(key))) << key;
    EXPECT_FALSE(store.contains("missing"));
    EXPECT_EQ(store.boolValue("flag"), std::nullopt);
    EXPECT_EQ(store.integerValue("count"), std::nullopt);
    EXPECT_EQ(store.stringValue("text"), std::nullopt);
    EXPECT_EQ(store.stringListValue("list"), std::nullopt);
    EXPECT_EQ(store.dataValue("data"), std::nullopt);
    EXPECT_EQ(store.objectValue("object"), std::nullopt);

    store.setData("data", "bytes"); // data is neither a string nor an object
    EXPECT_EQ(store.stringValue("data"), std::nullopt);
    EXPECT_EQ(store.objectValue("data"), std::nullopt);
}

TEST_F(PreferencesStoreTest, removeDeletesTheKeyOnDiskAndAWriteLeavesNoTemporaryFile)
{
    {
        PreferencesStore store(path());
        store.setString("text", "x");
        store.setBool("flag", true);
        store.remove("text");
        store.remove("never-there");
    }
    EXPECT_FALSE(PreferencesStore(path()).contains("text"));
    EXPECT_EQ(QDir(directory.filePath("Quorla")).entryList(QDir::Files | QDir::Hidden), QStringList{"preferences.json"});
}

TEST_F(PreferencesStoreTest, unreadableFilesAreKeptAsideAndDefaultsUsed)
{
    for (const QByteArray &bytes : {QByteArray("{not json"), QByteArray("[1, 2]"), QByteArray("\"text\""),
                                    QByteArray("\xff\xfe\x00")}) {
        writeFile(bytes);
        QFile::remove(path() + ".corrupt");
        PreferencesStore store(path());
        EXPECT_FALSE(store.contains("flag")) << bytes.toStdString();
        QFile aside(path() + ".corrupt");
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly)) << bytes.toStdString();
        EXPECT_EQ(aside.readAll(), bytes);
        store.setBool("flag", true);
        EXPECT_EQ(PreferencesStore(path()).boolValue("flag"), true);
    }
}

TEST_F(PreferencesStoreTest, anEmptyOrMissingFileStartsEmptyWithoutAnythingKeptAside)
{
    PreferencesStore missing(path());
    EXPECT_FALSE(QFile::exists(path()));
    writeFile("{}");
    PreferencesStore empty(path());
    EXPECT_FALSE(QFile::exists(path() + ".corrupt"));
}

} // namespace
