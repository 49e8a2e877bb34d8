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

// Only an unreadable file is kept aside; reading never creates or changes a file.
TEST_F(PreferencesStoreTest, unreadableFilesAreKeptAsideAndDefaultsUsed)
{
    const struct {
        std::optional<QByteArray> bytes; // none: no file
        bool keptAside;
    } cases[] = {
        {std::nullopt, false}, {QByteArray("{}"), false}, {QByteArray("{not json"), true},
        {QByteArray("[1, 2]"), true}, {QByteArray("\"text\""), true}, {QByteArray("\xff\xfe\x00"), true},
    };
    for (const auto &c : cases) {
        const std::string name = c.bytes ? c.bytes->toStdString() : "no file";
        QFile::remove(path());
        QFile::remove(path() + ".corrupt");
        if (c.bytes)
            writeFile(*c.bytes);
        PreferencesStore store(path());
        EXPECT_FALSE(store.contains("flag")) << name;
        EXPECT_EQ(QFile::exists(path()), c.bytes && !c.keptAside) << name;
        QFile aside(path() + ".corrupt");
        EXPECT_EQ(aside.open(QIODevice::ReadOnly), c.keptAside) << name;
        if (c.keptAside)
            EXPECT_EQ(aside.readAll(), *c.bytes);
        store.setBool("flag", true);
        EXPECT_EQ(PreferencesStore(path()).boolValue("flag"), true) << name;
    }
}

} // namespace
