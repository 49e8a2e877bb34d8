#include "ModelTest.h"

#include <QTemporaryDir>

namespace {

struct PreferencesStoreTest : ::testing::Test {
    QString path() const { return directory.filePath("Quorla/preferences.json"); }
    QTemporaryDir directory;
};

TEST_F(PreferencesStoreTest, valuesSurviveARestartWithTheirTypesAndOthersReadAsAbsent)
{
    const QByteArray data("\x00\xff{json}", 8);
    {
        PreferencesStore store(path());
        store.setBool("flag", true);
        store.setInteger("count", 9'007'199'254'740'993LL); // beyond a double's exact range
        store.setString("text", "  spaced\n");
        store.setStringList("list", {"a", "b"});
        store.setData("data", data);
        store.setObject("object", {{"k", 1}});
        store.setString("gone", "x");
        store.remove("gone");
    }
    PreferencesStore store(path());
    EXPECT_EQ(store.boolValue("flag"), true);
    EXPECT_EQ(store.integerValue("count"), 9'007'199'254'740'993LL);
    EXPECT_EQ(store.stringValue("text"), "  spaced\n");
    EXPECT_EQ(store.stringListValue("list"), QStringList({"a", "b"}));
    EXPECT_EQ(store.dataValue("data"), data);
    EXPECT_EQ(store.objectValue("object"), QJsonObject({{"k", 1}}));
    EXPECT_FALSE(store.contains("gone"));
    EXPECT_EQ(QDir(directory.filePath("Quorla")).entryList(QDir::Files | QDir::Hidden), QStringList{"preferences.json"});

    writeTestFile(path(), R"({"flag": "yes", "count": 1.5, "text": 3, "list": ["a", 2], "data": "aGk=", "object": [1]})");
    PreferencesStore wrong(path());
    EXPECT_TRUE(wrong.contains("flag"));
    EXPECT_FALSE(wrong.boolValue("flag") || wrong.integerValue("count") || wrong.stringValue("text")
                 || wrong.stringListValue("list") || wrong.dataValue("data") || wrong.objectValue("object"));
}

// Only an unreadable file is kept aside; reading never creates or changes a file.
TEST_F(PreferencesStoreTest, unreadableFilesAreKeptAsideAndDefaultsUsed)
{
    const std::pair<std::optional<QByteArray>, bool> cases[] = {
        {std::nullopt, false},
        {"{}", false},
        {"{not json", true},
        {"[1, 2]", true},
        {QByteArray("\xff\xfe\x00", 3), true},
    };
    for (const auto &[bytes, keptAside] : cases) {
        const std::string name = bytes ? bytes->toStdString() : "no file";
        QFile::remove(path());
        QFile::remove(path() + ".corrupt");
        if (bytes)
            writeTestFile(path(), *bytes);
        PreferencesStore store(path());
        EXPECT_FALSE(store.contains("flag")) << name;
        EXPECT_EQ(QFile::exists(path()), bytes && !keptAside) << name;
        QFile aside(path() + ".corrupt");
        EXPECT_EQ(aside.open(QIODevice::ReadOnly), keptAside) << name;
        if (keptAside) {
            EXPECT_EQ(aside.readAll(), *bytes) << name;
        }
        store.setBool("flag", true);
        EXPECT_EQ(PreferencesStore(path()).boolValue("flag"), true) << name;
    }
}

} // namespace
