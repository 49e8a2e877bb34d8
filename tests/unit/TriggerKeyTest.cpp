#include "models/TriggerKey.h"

#include <QSet>
#include <gtest/gtest.h>

namespace {

TEST(TriggerKey, theChoicesHaveUniqueIdsAndRightCtrlComesFirst)
{
    QSet<QString> ids;
    for (const TriggerKey &key : TriggerKey::all())
        ids.insert(key.id);
    EXPECT_EQ(ids.size(), TriggerKey::all().size());
    EXPECT_EQ(TriggerKey::defaultKey().displayName, "Right Ctrl");
    QStringList names;
    for (const TriggerKey &key : TriggerKey::all())
        names.append(key.displayName);
    EXPECT_EQ(names, QStringList({"Right Ctrl", "Right Alt", "Right Super", "Menu", "Scroll Lock", "Pause", "Fn"}));
}

TEST(TriggerKey, normalizedFallsBackToTheDefault)
{
    const struct {
        std::optional<QString> stored;
        const char *expectedId;
    } cases[] = {
        {std::nullopt, "rightControl"}, {QString(), "rightControl"}, {"   ", "rightControl"},
        {"RightAlt", "rightControl"}, // ids are exact
        {"leftControl", "rightControl"}, {"rightAlt", "rightAlt"}, {" pause\n", "pause"}, {"fn", "fn"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(TriggerKey::normalized(c.stored).id, QLatin1String(c.expectedId)) << c.stored.value_or("<none>").toStdString();
}

} // namespace
