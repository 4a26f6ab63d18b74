#include "vxctl/FeatureFacts.h"

#include "support/genapi/NodeMapFixture.h"

#include "VxCamera/surface/NodeParameterArray.h"

namespace vxctl {
namespace {

class FeatureFactsTest : public testing::Test {
protected:
    FeatureFacts Read(std::string_view nodes, const char* name)
    {
        auto map = genapi::NodeMap::Load(Describe("<Category Name=\"Root\"><pFeature>" + std::string(name) +
                                                  "</pFeature></Category>" + std::string(nodes)),
                                         m_port);
        if (!map)
            throw std::runtime_error(map.Error().GetDescription().Narrow());
        m_array = NodeParameterArray::Create(*std::move(map));
        return ReadFacts(*m_array, *m_array->Get(VxString(name)));
    }

    FakeRegisterPort m_port;
    std::unique_ptr<NodeParameterArray> m_array;
};

TEST_F(FeatureFactsTest, ReadsAnInteger)
{
    const FeatureFacts facts =
        Read("<Integer Name=\"Width\"><ToolTip>Width of the picture.</ToolTip><Visibility>Expert</Visibility>"
             "<Value>640</Value><Min>4</Min><Max>4096</Max><Inc>4</Inc><Unit>px</Unit></Integer>"
             "<Integer Name=\"Selector\"><Value>0</Value><pSelected>Width</pSelected></Integer>",
             "Width");

    EXPECT_EQ(facts.name, "Width");
    EXPECT_EQ(facts.category, "root");
    EXPECT_EQ(facts.type, VxGenType::Integer);
    EXPECT_EQ(facts.visibility, VxGenVisibility::Expert);
    EXPECT_TRUE(facts.isAvailable && facts.isReadable && facts.isWritable);
    EXPECT_EQ(facts.value, "640");
    EXPECT_EQ(facts.unit, "px");
    EXPECT_EQ(facts.minimum, "4");
    EXPECT_EQ(facts.maximum, "4096");
    EXPECT_EQ(facts.increment, "4");
    EXPECT_EQ(facts.description, "Width of the picture.");
    EXPECT_EQ(facts.selectedBy, std::vector<std::string>{"Selector"});
}

TEST_F(FeatureFactsTest, LeavesLimitsOutThatAreNone)
{
    const FeatureFacts facts = Read("<Integer Name=\"I\"><Value>1</Value></Integer>", "I");

    EXPECT_FALSE(facts.minimum);
    EXPECT_FALSE(facts.maximum);
    EXPECT_FALSE(facts.increment);
}

TEST_F(FeatureFactsTest, ReadsAFloatInItsShortestForm)
{
    const FeatureFacts facts =
        Read("<Float Name=\"F\"><Value>0.1</Value><Min>-1.5</Min><Max>1e9</Max></Float>", "F");

    EXPECT_EQ(facts.value, "0.1");
    EXPECT_EQ(facts.minimum, "-1.5");
    EXPECT_EQ(facts.maximum, "1e+09");
}

TEST_F(FeatureFactsTest, ListsTheEntriesThatAreThereNow)
{
    const FeatureFacts facts =
        Read("<Enumeration Name=\"E\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"Gone\"><Value>1</Value><pIsAvailable>No</pIsAvailable></EnumEntry>"
             "<EnumEntry Name=\"On\"><Value>2</Value></EnumEntry><Value>2</Value></Enumeration>"
             "<Integer Name=\"No\"><Value>0</Value></Integer>",
             "E");

    EXPECT_EQ(facts.value, "On");
    EXPECT_EQ(facts.entries, (std::vector<std::string>{"Off", "On"}));
}

TEST_F(FeatureFactsTest, SaysWhyAValueCannotBeRead)
{
    m_port.failure = VxResult(VxError::Timeout, "the camera does not answer");

    const FeatureFacts facts =
        Read("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>"
             "<pPort>Device</pPort></IntReg>",
             "R");

    EXPECT_FALSE(facts.value);
    EXPECT_NE(facts.whyNoValue.find("the camera does not answer"), std::string::npos) << facts.whyNoValue;
}

TEST_F(FeatureFactsTest, ReadsNoValueOfACommand)
{
    const FeatureFacts facts =
        Read("<Command Name=\"C\"><pValue>V</pValue><CommandValue>1</CommandValue></Command>"
             "<Integer Name=\"V\"><Value>0</Value></Integer>",
             "C");

    EXPECT_EQ(facts.type, VxGenType::Command);
    EXPECT_FALSE(facts.value);
    EXPECT_EQ(facts.whyNoValue, "");
}

TEST_F(FeatureFactsTest, ReadsNothingOfAFeatureThatIsNotAvailable)
{
    const FeatureFacts facts =
        Read("<Integer Name=\"I\"><pIsAvailable>No</pIsAvailable><Value>1</Value></Integer>"
             "<Integer Name=\"No\"><Value>0</Value></Integer>",
             "I");

    EXPECT_FALSE(facts.isAvailable);
    EXPECT_FALSE(facts.value);
}

} // namespace
} // namespace vxctl
