#include "VxCamera/surface/FeatureStore.h"

#include "support/genapi/NodeMapFixture.h"
#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "VxCamera/surface/NodeParameterArray.h"
#include "VxDSSource/camera/VxGenParameter.h"

namespace surface {
namespace {

class FeatureRestorerTest : public testing::Test {
protected:
    void Load(std::string_view nodes)
    {
        auto map = genapi::NodeMap::Load(Describe(nodes), port);
        if (!map)
            throw std::runtime_error(map.Error().GetDescription().Narrow());
        array = NodeParameterArray::Create(*std::move(map));
    }
    [[nodiscard]] std::string Get(const char* name) const
    {
        VxString text("(none)");
        std::ignore = array->Get(VxString(name))->ToString(text);
        return text.Narrow();
    }

    FakeClock clock;
    FakeRegisterPort port;
    std::unique_ptr<NodeParameterArray> array;
};

TEST_F(FeatureRestorerTest, ARestoreThatRunsOutOfTimePutsEachOpenSelectorBack)
{
    const char* const nodes =
        "<Category "
        "Name=\"Root\"><pFeature>O</pFeature><pFeature>S</pFeature><pFeature>A</pFeature></Category>"
        "<Integer Name=\"O\"><Value>5</Value><pSelected>S</pSelected></Integer>"
        "<Integer Name=\"S\"><Value>7</Value><pSelected>A</pSelected></Integer>"
        "<IntReg Name=\"A\"><Address>0</Address><pAddress>S</pAddress><Length>4</Length>"
        "<AccessMode>RW</AccessMode><Streamable>Yes</Streamable></IntReg>";
    using Kind = ConfigurationStep::Kind;
    const std::vector<ConfigurationStep> steps{
        {Kind::Select, 0, "O", "1"}, {Kind::Select, 1, "S", "1"},  {Kind::Feature, 2, "A", "9"},
        {Kind::Select, 1, "S", "2"}, {Kind::Feature, 2, "A", "9"}, {Kind::Select, 1, "S", "8"},
        {Kind::Select, 0, "O", "2"}, {Kind::Select, 1, "S", "3"},  {Kind::Feature, 2, "A", "9"},
        {Kind::Select, 1, "S", "4"}, {Kind::Select, 0, "O", "6"},
    };
    // Each feature is read, then written: the first, the second or the third one takes the rest of the time.
    for (const int accesses : {2, 3, 5}) {
        Load(nodes);
        port.writes = 0;
        port.onAccess = [&] { clock.Advance(std::chrono::milliseconds(kLongestTransfer) / accesses); };

        const VxResult result = RestoreFeatures(*array, steps, clock);

        EXPECT_EQ(result.Code(), VxError::Timeout) << accesses;
        EXPECT_EQ(Get("O"), "6") << accesses;
        EXPECT_EQ(Get("S"), accesses == 5 ? "4" : "8") << accesses;
    }
}

TEST_F(FeatureRestorerTest, SelectorsOfACameraThatIsGoneAreLeftAlone)
{
    Load("<Category Name=\"Root\"><pFeature>S</pFeature><pFeature>A</pFeature></Category>"
         "<Integer Name=\"S\"><Value>7</Value><pSelected>A</pSelected></Integer>"
         "<IntReg Name=\"A\"><Address>0</Address><Length>4</Length>"
         "<AccessMode>RW</AccessMode><Streamable>Yes</Streamable></IntReg>");
    using Kind = ConfigurationStep::Kind;
    port.failure = VxResult(VxError::LinkLost, "it is gone");

    const VxResult result = RestoreFeatures(
        *array, {{Kind::Select, 0, "S", "1"}, {Kind::Feature, 1, "A", "9"}, {Kind::Select, 0, "S", "8"}},
        clock);

    EXPECT_EQ(result.Code(), VxError::LinkLost);
    EXPECT_EQ(Get("S"), "1");
}

} // namespace
} // namespace surface
