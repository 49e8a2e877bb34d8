#include "models/TriggerKey.h"

#include <gtest/gtest.h>

namespace {

TEST(TriggerKey, normalizedFallsBackToTheDefault)
{
    const std::pair<std::optional<QString>, const char *> cases[] = {
        {std::nullopt, "rightControl"},
        {"   ", "rightControl"},
        {"RightAlt", "rightControl"}, // ids are exact
        {"leftControl", "rightControl"},
        {" pause\n", "pause"},
        {"fn", "fn"},
    };
    for (const auto &[stored, id] : cases)
        EXPECT_EQ(TriggerKey::normalized(stored).id, QLatin1String(id)) << stored.value_or("<none>").toStdString();
}

} // namespace
