#include "VxCamera/surface/FeatureStore.h"

#include "support/genapi/NodeMapFixture.h"
#include "support/network/FakeClock.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "VxCamera/surface/ListedCommand.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/NodeParameterArray.h"
#include "VxCamera/surface/ParameterList.h"

namespace surface {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

std::string Shown(const std::vector<ConfigurationStep>& steps)
{
    std::string text;
    for (const ConfigurationStep& step : steps)
        text += std::string(step.level, '.') + (step.kind == ConfigurationStep::Kind::Select ? "S " : "F ") +
                step.name + "=" + step.value + "\n";
    return text;
}

/// A camera with a window, two gains behind a selector, and things that are not stored.
class FeatureStoreTest : public testing::Test {
protected:
    FeatureStoreTest() { Load(kCamera); }

    void Load(std::string_view nodes)
    {
        auto map = genapi::NodeMap::Load(Describe(nodes), port);
        if (!map)
            throw std::runtime_error(map.Error().GetDescription().Narrow());
        array = NodeParameterArray::Create(*std::move(map));
    }

    void Set(const char* name, const char* text)
    {
        const VxResult result = array->Get(VxString(name))->FromString(VxString(text));
        ASSERT_TRUE(result.IsOK()) << result.GetDescription().Narrow();
    }

    [[nodiscard]] std::string Collected()
    {
        const CollectedFeatures collected = CollectFeatures(*array, clock);
        EXPECT_TRUE(collected.result.IsOK()) << collected.result.GetDescription().Narrow();
        return Shown(collected.steps);
    }

    [[nodiscard]] std::string Get(const char* name) const
    {
        VxString text("(none)");
        std::ignore = array->Get(VxString(name))->ToString(text);
        return text.Narrow();
    }

    static constexpr std::string_view kCamera =
        "<Category "
        "Name=\"Root\"><pFeature>OffsetX</pFeature><pFeature>Width</pFeature><pFeature>GainSelector</"
        "pFeature>"
        "<pFeature>Gain</pFeature><pFeature>Start</pFeature><pFeature>Serial</"
        "pFeature><pFeature>Temperature</pFeature>"
        "</Category>"
        "<Integer "
        "Name=\"OffsetX\"><Value>0</Value><Min>0</Min><pMax>OffsetMax</pMax><Streamable>Yes</Streamable></"
        "Integer>"
        "<IntSwissKnife Name=\"OffsetMax\"><pVariable "
        "Name=\"W\">Width</pVariable><Formula>100-W</Formula></IntSwissKnife>"
        "<Integer "
        "Name=\"Width\"><Value>100</Value><Min>1</Min><pMax>WidthMax</pMax><Streamable>Yes</Streamable></"
        "Integer>"
        "<IntSwissKnife Name=\"WidthMax\"><pVariable "
        "Name=\"X\">OffsetX</pVariable><Formula>100-X</Formula></IntSwissKnife>"
        "<Enumeration Name=\"GainSelector\"><EnumEntry Name=\"Red\"><Value>0</Value></EnumEntry>"
        "<EnumEntry Name=\"Gone\"><Value>5</Value><pIsAvailable>Zero</pIsAvailable></EnumEntry>"
        "<EnumEntry "
        "Name=\"Blue\"><Value>1</Value></EnumEntry><Value>1</Value><pSelected>Gain</pSelected></Enumeration>"
        "<Integer Name=\"Gain\"><pIndex>GainSelector</pIndex><ValueIndexed Index=\"0\">10</ValueIndexed>"
        "<ValueIndexed Index=\"1\">20</ValueIndexed><Streamable>Yes</Streamable></Integer>"
        "<Command "
        "Name=\"Start\"><pValue>Zero</pValue><CommandValue>0</CommandValue><Streamable>Yes</Streamable></"
        "Command>"
        "<Integer Name=\"Zero\"><Value>0</Value></Integer>"
        "<Integer "
        "Name=\"Serial\"><Value>7</Value><ImposedAccessMode>RO</ImposedAccessMode><Streamable>Yes</"
        "Streamable>"
        "</Integer><Integer Name=\"Temperature\"><Value>7</Value></Integer>";

    FakeClock clock;
    FakeRegisterPort port;
    std::unique_ptr<NodeParameterArray> array;
};

TEST_F(FeatureStoreTest, CollectsStreamableFeaturesForEachSelectorValue)
{
    EXPECT_EQ(Collected(), "F OffsetX=0\nF Width=100\n"
                           "S GainSelector=Red\n.F Gain=10\nS GainSelector=Blue\n.F Gain=20\n"
                           "S GainSelector=Blue\n");
}

TEST_F(FeatureStoreTest, LeavesSelectorsAsTheyWere)
{
    Set("GainSelector", "Red");

    std::ignore = CollectFeatures(*array, clock);

    EXPECT_EQ(Get("GainSelector"), "Red");
}

TEST_F(FeatureStoreTest, RestoresWhatItCollected)
{
    Set("Width", "40");
    Set("OffsetX", "60");
    Set("GainSelector", "Red");
    Set("Gain", "11");
    const auto steps = CollectFeatures(*array, clock).steps;
    Load(kCamera); // Width is 100 again: the offset has to wait for it

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_TRUE(result.IsOK()) << result.GetDescription().Narrow();
    EXPECT_EQ(Get("Width"), "40");
    EXPECT_EQ(Get("OffsetX"), "60");
    EXPECT_EQ(Get("GainSelector"), "Red");
    EXPECT_EQ(Get("Gain"), "11");
    Set("GainSelector", "Blue");
    EXPECT_EQ(Get("Gain"), "20");
}

TEST_F(FeatureStoreTest, RestoresInTheOtherDirectionAsWell)
{
    const auto steps = CollectFeatures(*array, clock).steps; // Width 100, OffsetX 0
    Set("Width", "40");
    Set("OffsetX", "60"); // now the width has to wait for the offset

    EXPECT_TRUE(RestoreFeatures(*array, steps, clock).IsOK());

    EXPECT_EQ(Get("Width"), "100");
    EXPECT_EQ(Get("OffsetX"), "0");
}

TEST_F(FeatureStoreTest, WritesAgainWhatALaterFeatureChanged)
{
    // The camera sets the exposure to 1 whenever the mode is written.
    Load("<Category Name=\"Root\"><pFeature>Exposure</pFeature><pFeature>Mode</pFeature></Category>"
         "<Integer Name=\"Exposure\"><Value>1</Value><Streamable>Yes</Streamable></Integer>"
         "<Integer "
         "Name=\"Mode\"><Value>0</Value><pValueCopy>Exposure</pValueCopy><Streamable>Yes</Streamable></"
         "Integer>");
    Set("Mode", "1");
    Set("Exposure", "500");
    const auto steps = CollectFeatures(*array, clock).steps;
    Set("Mode", "2");

    EXPECT_TRUE(RestoreFeatures(*array, steps, clock).IsOK());

    EXPECT_EQ(Get("Exposure"), "500");
    EXPECT_EQ(Get("Mode"), "1");
}

TEST_F(FeatureStoreTest, GoesOnPastFeaturesThatRefuse)
{
    const std::vector<ConfigurationStep> steps{{ConfigurationStep::Kind::Feature, 0, "Gone", "1"},
                                               {ConfigurationStep::Kind::Feature, 0, "Width", "1000"},
                                               {ConfigurationStep::Kind::Feature, 0, "Temperature", "9"}};

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_EQ(result.Code(), VxError::NotFound);
    EXPECT_EQ(result.GetDescription().Narrow(),
              "2 of 3 features could not be restored: Gone: there is no feature of this name; "
              "Width: 1000 is out of range; it must be from 1 to 100");
    EXPECT_EQ(Get("Temperature"), "9");
}

TEST_F(FeatureStoreTest, DoesNotWriteSelectedFeaturesUnderTheWrongSelector)
{
    const std::vector<ConfigurationStep> steps{{ConfigurationStep::Kind::Select, 0, "GainSelector", "Gone"},
                                               {ConfigurationStep::Kind::Feature, 1, "Gain", "99"},
                                               {ConfigurationStep::Kind::Select, 0, "GainSelector", "Red"},
                                               {ConfigurationStep::Kind::Feature, 1, "Gain", "12"},
                                               {ConfigurationStep::Kind::Feature, 0, "Width", "50"}};

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_EQ(result.Code(), VxError::NotAvailable);
    EXPECT_THAT(result.GetDescription().Narrow(),
                HasSubstr("Gain: it was not written because \"GainSelector\" could not be set to \"Gone\""));
    EXPECT_EQ(Get("Gain"), "12");
    EXPECT_EQ(Get("Width"), "50");
    Set("GainSelector", "Blue");
    EXPECT_EQ(Get("Gain"), "20");
}

TEST_F(FeatureStoreTest, WalksSelectorsOfSelectors)
{
    Load("<Category "
         "Name=\"Root\"><pFeature>Outer</pFeature><pFeature>Inner</pFeature><pFeature>V</pFeature></Category>"
         "<Integer "
         "Name=\"Outer\"><Value>1</Value><Min>0</Min><Max>1</Max><pSelected>Inner</pSelected></Integer>"
         "<Boolean Name=\"Inner\"><Value>true</Value><pSelected>V</pSelected></Boolean>"
         "<Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    EXPECT_EQ(Collected(),
              "S Outer=0\n.S Inner=false\n..F V=5\n.S Inner=true\n..F V=5\n.S Inner=true\n"
              "S Outer=1\n.S Inner=false\n..F V=5\n.S Inner=true\n..F V=5\n.S Inner=true\nS Outer=1\n");
}

/// An outer selector, an inner one with a value of its own for each value of the outer one, and a feature
/// behind both; the inner one is named first.
constexpr std::string_view kNested =
    "<Category Name=\"Root\"><pFeature>Value</pFeature></Category>"
    "<Boolean Name=\"Inner\"><pValue>InnerNumber</pValue><pSelected>Value</pSelected></Boolean>"
    "<Integer Name=\"InnerNumber\"><pIndex>Outer</pIndex><pValueIndexed Index=\"0\">I0</pValueIndexed>"
    "<pValueIndexed Index=\"1\">I1</pValueIndexed><pValueDefault>I0</pValueDefault></Integer>"
    "<Integer Name=\"I0\"><Value>1</Value></Integer><Integer Name=\"I1\"><Value>0</Value></Integer>"
    "<Integer Name=\"Outer\"><Value>0</Value><Min>0</Min><Max>1</Max><pSelected>Inner</pSelected>"
    "<pSelected>Value</pSelected></Integer>"
    "<Integer Name=\"Value\"><pIndex>Place</pIndex><pValueIndexed Index=\"0\">V0</pValueIndexed>"
    "<pValueIndexed Index=\"1\">V1</pValueIndexed><pValueIndexed Index=\"2\">V2</pValueIndexed>"
    "<pValueDefault>V3</pValueDefault><Streamable>Yes</Streamable></Integer>"
    "<IntSwissKnife Name=\"Place\"><pVariable Name=\"O\">Outer</pVariable><pVariable "
    "Name=\"I\">InnerNumber</pVariable>"
    "<Formula>2*O+I</Formula></IntSwissKnife>"
    "<Integer Name=\"V0\"><Value>10</Value></Integer><Integer Name=\"V1\"><Value>11</Value></Integer>"
    "<Integer Name=\"V2\"><Value>12</Value></Integer><Integer Name=\"V3\"><Value>13</Value></Integer>";

TEST_F(FeatureStoreTest, LeavesSelectedSelectorsAsTheyWereForEachValueOfTheOuterOne)
{
    Load(kNested);

    EXPECT_EQ(
        Collected(),
        "S Outer=0\n.S Inner=false\n..F Value=10\n.S Inner=true\n..F Value=11\n.S Inner=true\n"
        "S Outer=1\n.S Inner=false\n..F Value=12\n.S Inner=true\n..F Value=13\n.S Inner=false\nS Outer=0\n");

    EXPECT_EQ(Get("Outer"), "0");
    EXPECT_EQ(Get("I0"), "1");
    EXPECT_EQ(Get("I1"), "0");
}

TEST_F(FeatureStoreTest, RestoresWhatNestedSelectorsSelect)
{
    Load(kNested);
    const auto steps = CollectFeatures(*array, clock).steps;
    for (const char* value : {"V0", "V1", "V2", "V3", "I1"})
        Set(value, "1");
    Set("Outer", "1");

    EXPECT_TRUE(RestoreFeatures(*array, steps, clock).IsOK());

    EXPECT_EQ(Get("V0") + " " + Get("V1") + " " + Get("V2") + " " + Get("V3"), "10 11 12 13");
    EXPECT_EQ(Get("Outer") + " " + Get("I0") + " " + Get("I1"), "0 1 0");
}

TEST_F(FeatureStoreTest, StoresWhatAnIndexIntoATableSelectsForItsPresentValueOnly)
{
    Load("<Category Name=\"Root\"><pFeature>Value</pFeature></Category>"
         "<Integer "
         "Name=\"Index\"><Value>7</Value><Min>0</Min><Max>4095</Max><pSelected>Value</pSelected></Integer>"
         "<Integer Name=\"Value\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    EXPECT_EQ(Collected(), "S Index=7\n.F Value=5\nS Index=7\n");
}

TEST_F(FeatureStoreTest, StoresWhatALockedSelectorSelectsAsItIs)
{
    Load("<Category Name=\"Root\"><pFeature>Value</pFeature></Category>"
         "<Integer Name=\"Index\"><Value>1</Value><Min>0</Min><Max>2</Max>"
         "<ImposedAccessMode>RO</ImposedAccessMode><pSelected>Value</pSelected></Integer>"
         "<Integer Name=\"Value\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    EXPECT_EQ(Collected(), "F Value=5\n");
}

TEST_F(FeatureStoreTest, DoesNotWalkMoreSelectorsThanAnybodyHas)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>V</pFeature></Category>";
    for (int i = 0; i < 5; ++i)
        nodes += "<Boolean Name=\"S" + std::to_string(i) +
                 "\"><Value>true</Value><pSelected>V</pSelected></Boolean>";
    Load(nodes + "<Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    EXPECT_EQ(Collected(), "S S0=true\n.S S1=true\n..S S2=true\n...S S3=true\n....S S4=true\n.....F V=5\n"
                           "....S S4=true\n...S S3=true\n..S S2=true\n.S S1=true\nS S0=true\n");
}

TEST_F(FeatureStoreTest, SaysWhichFeatureCouldNotBeRead)
{
    Load("<Category Name=\"Root\"><pFeature>Broken</pFeature><pFeature>Whole</pFeature></Category>"
         "<Enumeration Name=\"Broken\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><Value>7</Value>"
         "<Streamable>Yes</Streamable></Enumeration>"
         "<Integer Name=\"Whole\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    const CollectedFeatures collected = CollectFeatures(*array, clock);

    EXPECT_EQ(Shown(collected.steps), "F Whole=5\n");
    EXPECT_EQ(collected.result.Code(), VxError::InvalidData);
    EXPECT_THAT(collected.result.GetDescription().Narrow(),
                testing::StartsWith("1 of 2 features could not be read: Broken: "));
}

TEST_F(FeatureStoreTest, RestoresAChainInWhichEachFeatureUnlocksTheOneBefore)
{
    std::string nodes = "<Category Name=\"Root\">";
    for (int i = 0; i < 6; ++i)
        nodes += "<pFeature>C" + std::to_string(i) + "</pFeature>";
    nodes += "</Category>";
    for (int i = 0; i < 6; ++i)
        nodes += "<Integer Name=\"C" + std::to_string(i) + "\"><Value>0</Value>" +
                 (i < 5 ? "<pMax>C" + std::to_string(i + 1) + "</pMax>" : std::string()) +
                 "<Streamable>Yes</Streamable></Integer>";
    Load(nodes);
    const std::vector<ConfigurationStep> steps{
        {ConfigurationStep::Kind::Feature, 0, "C0", "9"}, {ConfigurationStep::Kind::Feature, 0, "C1", "9"},
        {ConfigurationStep::Kind::Feature, 0, "C2", "9"}, {ConfigurationStep::Kind::Feature, 0, "C3", "9"},
        {ConfigurationStep::Kind::Feature, 0, "C4", "9"}, {ConfigurationStep::Kind::Feature, 0, "C5", "9"}};

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_TRUE(result.IsOK()) << result.GetDescription().Narrow();
    EXPECT_EQ(Get("C0"), "9");
}

TEST_F(FeatureStoreTest, EndsSelectorsThatSelectEachOther)
{
    Load("<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature></Category>"
         "<Boolean Name=\"A\"><Value>true</Value><pSelected>B</pSelected><pSelected>A</pSelected>"
         "<Streamable>Yes</Streamable></Boolean>"
         "<Boolean "
         "Name=\"B\"><Value>true</Value><pSelected>A</pSelected><Streamable>Yes</Streamable></Boolean>");

    const auto steps = CollectFeatures(*array, clock).steps;

    EXPECT_LT(steps.size(), 20u);
    EXPECT_TRUE(RestoreFeatures(*array, steps, clock).IsOK());
    EXPECT_EQ(Get("A"), "true");
    EXPECT_EQ(Get("B"), "true");
}

TEST_F(FeatureStoreTest, BoundsWhatSelectorsMultiply)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>V</pFeature></Category>";
    for (int i = 0; i < 4; ++i)
        nodes += "<Integer Name=\"S" + std::to_string(i) +
                 "\"><Value>0</Value><Min>0</Min><Max>255</Max>"
                 "<pSelected>V</pSelected></Integer>";
    Load(nodes + "<Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    const auto collected = CollectFeatures(*array, clock);

    EXPECT_LE(collected.steps.size(), 20100u);
    EXPECT_THAT(collected.result.GetDescription().Narrow(), HasSubstr("more than 20000 values"));
}

/// Registers that can be read and refuse to be written.
class RefusingPort final : public genapi::IRegisterPort {
public:
    VxResult Read(std::uint64_t, std::span<std::byte> bytes) override
    {
        std::ranges::fill(bytes, std::byte{0});
        return VxResult::Ok();
    }
    VxResult Write(std::uint64_t, std::span<const std::byte>) override
    {
        ++writes;
        return VxResult(VxError::CameraError, "refused");
    }

    int writes = 0;
};

TEST_F(FeatureStoreTest, BoundsTheSelectorValuesThatAreRefused)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>V</pFeature></Category>";
    for (const char* name : {"A", "B", "C"})
        nodes += "<Integer Name=\"" + std::string(name) +
                 "\"><Value>0</Value><Min>0</Min><Max>255</Max><pSelected>V</pSelected></Integer>";
    nodes += "<Integer Name=\"Refused\"><pValue>R</pValue><Min>0</Min><Max>255</Max><pSelected>V</pSelected>"
             "</Integer><IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
             "</IntReg><Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>";
    RefusingPort refusing;
    array = NodeParameterArray::Create(*genapi::NodeMap::Load(Describe(nodes), refusing));

    const auto collected = CollectFeatures(*array, clock);

    EXPECT_GT(refusing.writes, 10'000);
    EXPECT_LE(refusing.writes, 20'001);
    EXPECT_FALSE(collected.result.IsOK());
    array.reset(); // before its port
}

TEST_F(FeatureStoreTest, StoresWhatASelectorWithVeryManyEntriesSelectsForItsPresentOneOnly)
{
    std::string entries;
    for (int i = 0; i < 300; ++i)
        entries += "<EnumEntry Name=\"E" + std::to_string(i) + "\"><Value>" + std::to_string(i) +
                   "</Value></EnumEntry>";
    Load("<Category Name=\"Root\"><pFeature>V</pFeature></Category><Enumeration Name=\"S\">" + entries +
         "<Value>7</Value><pSelected>V</pSelected></Enumeration>"
         "<Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>");

    EXPECT_EQ(Collected(), "S S=E7\n.F V=5\nS S=E7\n");
}

TEST_F(FeatureStoreTest, EndsNetsOfSelectorsInBoundedTime)
{
    // 16 layers of 8 selectors, each of which selects all of the next layer: 8 to the 16th ways.
    std::string nodes = "<Category Name=\"Root\"><pFeature>V</pFeature></Category>"
                        "<Integer Name=\"V\"><Value>5</Value><Streamable>Yes</Streamable></Integer>";
    constexpr int kLayers = 16;
    constexpr int kWidth = 8;
    const auto name = [](int layer, int i) { return "S" + std::to_string(layer * kWidth + i); };
    for (int layer = 0; layer < kLayers; ++layer)
        for (int i = 0; i < kWidth; ++i) {
            nodes += "<Boolean Name=\"" + name(layer, i) + "\"><Value>true</Value>";
            for (int j = 0; layer > 0 && j < kWidth; ++j)
                nodes += "<pSelected>" + name(layer - 1, j) + "</pSelected>";
            nodes += std::string(layer == 0 ? "<pSelected>V</pSelected>" : "") + "</Boolean>";
        }
    Load(nodes);

    EXPECT_THAT(Collected(), HasSubstr("F V=5\n"));
}

/// Five registers, each a feature.
std::string FiveRegisters()
{
    std::string tree;
    std::string nodes;
    for (const char* name : {"A", "B", "C", "D", "E"}) {
        tree += "<pFeature>" + std::string(name) + "</pFeature>";
        nodes += "<IntReg Name=\"" + std::string(name) +
                 "\"><Streamable>Yes</Streamable><Address>0</Address><Length>4</Length>"
                 "<AccessMode>RW</AccessMode></IntReg>";
    }
    return "<Category Name=\"Root\">" + tree + "</Category>" + nodes;
}

TEST_F(FeatureStoreTest, EndsWhenTheCameraIsGoneMeanwhile)
{
    Load(FiveRegisters());
    const auto steps = CollectFeatures(*array, clock).steps;
    Load(FiveRegisters());
    port.onAccess = [this] { port.closed = VxResult(VxError::LinkLost, "it is gone"); };

    const auto collected = CollectFeatures(*array, clock);
    const VxResult restored = RestoreFeatures(*array, steps, clock);

    EXPECT_EQ(collected.result.Code(), VxError::LinkLost);
    EXPECT_THAT(collected.result.GetDescription().Narrow(), EndsWith("B: it is gone; not reached: C, D, E"));
    EXPECT_TRUE(collected.isGone);
    EXPECT_EQ(collected.steps.size(), 1u) << "which had been read before";
    EXPECT_EQ(restored.Code(), VxError::LinkLost);
    EXPECT_THAT(restored.GetDescription().Narrow(), EndsWith("A: it is gone; not reached: B, C, D, E"));
    port.onAccess = nullptr;
    port.closed.reset();
}

TEST_F(FeatureStoreTest, EndsWhenTheCameraIsGone)
{
    Load(FiveRegisters());
    const auto steps = CollectFeatures(*array, clock).steps;
    ASSERT_EQ(steps.size(), 5u);
    for (const VxError gone : {VxError::LinkLost, VxError::NotConnected}) {
        Load(FiveRegisters());
        port.failure = VxResult(gone, "it is gone");
        port.reads = 0;
        port.writes = 0;

        EXPECT_EQ(RestoreFeatures(*array, steps, clock).Code(), gone);
        EXPECT_EQ(port.writes, 1);
        port.reads = 0;
        const VxResult collected = CollectFeatures(*array, clock).result;
        EXPECT_EQ(collected.Code(), gone);
        EXPECT_THAT(collected.GetDescription().Narrow(), EndsWith("; not reached: B, C, D, E"));
        EXPECT_EQ(port.reads, 1);
        port.failure.reset();
    }
}

TEST_F(FeatureStoreTest, CollectingEndsWithTheTimeForAllAndSaysWhatItDidNotReach)
{
    Load(FiveRegisters());
    port.onAccess = [this] { clock.Advance(kLongestTransfer / 2); };

    const auto collected = CollectFeatures(*array, clock);

    EXPECT_EQ(Shown(collected.steps), "F A=0\nF B=0\n");
    EXPECT_EQ(collected.result.Code(), VxError::Timeout);
    EXPECT_THAT(collected.result.GetDescription().Narrow(),
                AllOf(HasSubstr("C: the time for all features together, 30 s, was over"),
                      EndsWith("; not reached: D, E")));
}

TEST_F(FeatureStoreTest, SelectorsGetTheirValuesBackAlsoWhenTheTimeIsOver)
{
    Load("<Category "
         "Name=\"Root\"><pFeature>S</pFeature><pFeature>A</pFeature><pFeature>B</pFeature></Category>"
         "<Integer Name=\"S\"><Value>7</Value><Min>0</Min><Max>9</Max><pSelected>A</pSelected>"
         "<pSelected>B</pSelected></Integer>"
         "<IntReg Name=\"A\"><Address>0</Address><pAddress>S</pAddress><Length>4</Length>"
         "<AccessMode>RW</AccessMode><Streamable>Yes</Streamable></IntReg>"
         "<IntReg Name=\"B\"><Address>64</Address><pAddress>S</pAddress><Length>4</Length>"
         "<AccessMode>RW</AccessMode><Streamable>Yes</Streamable></IntReg>");
    port.onAccess = [this] { clock.Advance(kLongestTransfer / 3); };

    const auto collected = CollectFeatures(*array, clock);

    EXPECT_EQ(Shown(collected.steps), "S S=0\n.F A=0\n.F B=0\nS S=1\n.F A=0\nS S=7\n");
    EXPECT_THAT(collected.result.GetDescription().Narrow(), HasSubstr("not reached: A"))
        << "not for every value of its selector";
    EXPECT_EQ(Get("S"), "7");
}

TEST_F(FeatureStoreTest, RestoringEndsWithTheTimeForAllAndSaysWhatItDidNotReach)
{
    Load(FiveRegisters());
    std::vector<ConfigurationStep> steps;
    for (const char* name : {"A", "B", "C", "D", "E"}) // of one register, so with different values
        steps.push_back({ConfigurationStep::Kind::Feature, 0, name, std::to_string(steps.size() + 1)});
    port.onAccess = [this] {
        clock.Advance(std::chrono::milliseconds(kLongestTransfer) / 4);
    }; // each is read, then written

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_EQ(result.Code(), VxError::Timeout);
    EXPECT_THAT(result.GetDescription().Narrow(),
                AllOf(testing::StartsWith("1 of 5 features could not be restored: C: the time for all"),
                      EndsWith("; not reached: D, E")));
    EXPECT_EQ(port.writes, 2);
}

TEST_F(FeatureStoreTest, WhenTheTimeEndsInALaterRoundTheRefusalsOfEarlierOnesStand)
{
    Load(FiveRegisters());
    const std::vector<ConfigurationStep> steps{{ConfigurationStep::Kind::Feature, 0, "Gone", "1"},
                                               {ConfigurationStep::Kind::Feature, 0, "A", "5"}};
    port.onAccess = [this] { clock.Advance(kLongestTransfer / 2); };

    const VxResult result = RestoreFeatures(*array, steps, clock);

    EXPECT_EQ(result.GetDescription().Narrow(),
              "1 of 2 features could not be restored: Gone: there is no feature of this name");
}

TEST_F(FeatureStoreTest, GoesOnWhenTheCameraDeniesAccessToOneFeature)
{
    Load(FiveRegisters());
    const auto steps = CollectFeatures(*array, clock).steps;
    Load(FiveRegisters());
    port.failure = VxResult(VxError::AccessDenied, "not now");

    EXPECT_EQ(RestoreFeatures(*array, steps, clock).Code(), VxError::AccessDenied);
    EXPECT_EQ(port.writes, 5);
}

TEST_F(FeatureStoreTest, HasNothingToDoWithoutAMap)
{
    const auto none = NodeParameterArray::Create(nullptr);

    EXPECT_TRUE(CollectFeatures(*none, clock).steps.empty());
    EXPECT_TRUE(RestoreFeatures(*none, {}, clock).IsOK());
}

TEST(FeatureStoreOfListTest, StoresWhatCanBeWritten)
{
    const FakeClock clock;
    std::int64_t retries = 3;
    ParameterList list;
    list.Add<ListedInteger>(ParameterFacts{"Retries", "Link"},
                            ListedInteger::Access{[&] { return retries; },
                                                  [&](std::int64_t v) {
                                                      retries = v;
                                                      return VxResult::Ok();
                                                  },
                                                  0, 20});
    list.Add<ListedInteger>(ParameterFacts{"Errors", "Link"},
                            ListedInteger::Access{[]() -> std::int64_t { return 7; }, {}});
    list.Add<ListedCommand>(ParameterFacts{"Reset", "Link"}, [] {});

    const auto steps = CollectFeatures(list, clock).steps;
    retries = 9;

    EXPECT_EQ(Shown(steps), "F Retries=3\n");
    EXPECT_TRUE(RestoreFeatures(list, steps, clock).IsOK());
    EXPECT_EQ(retries, 3);
}

} // namespace
} // namespace surface
