#include "VxCamera/surface/KnownDescriptions.h"

#include "support/genapi/NodeMapFixture.h"

namespace {

TEST(KnownDescriptionsTest, GivesEveryDeviceOfAModelTheSame)
{
    const std::string file = Describe("<Integer Name=\"I\"><Value>1</Value></Integer>");

    const auto first = ValueOf(KnownDescriptions().Get(file));
    const auto second = ValueOf(KnownDescriptions().Get(file));

    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
}

} // namespace
