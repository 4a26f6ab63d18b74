#include "VxCamera/genapi/node/ConverterNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <cfloat>

namespace genapi {
namespace {

class ConverterNodeTest : public NodeMapFixture {
protected:
    /// A converter "C" over an integer "Raw" from 1 to 100.
    void LoadConverter(std::string_view tag, std::string_view elements, std::string_view others = {})
    {
        Load("<" + std::string(tag) + " Name=\"C\">" + std::string(elements) + "<pValue>Raw</pValue></" +
             std::string(tag) +
             "><Integer Name=\"Raw\"><Value>50</Value><Min>1</Min><Max>100</Max><Unit>ticks</Unit>"
             "</Integer><Integer Name=\"Step\"><Value>4</Value></Integer>" +
             std::string(others));
    }
};

TEST_F(ConverterNodeTest, ConvertsBothWays)
{
    Load("<Converter "
         "Name=\"C\"><FormulaTo>FROM*100</FormulaTo><FormulaFrom>TO/100.0</FormulaFrom><pValue>R</pValue>"
         "</Converter><IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
         "<Endianess>BigEndian</Endianess></IntReg>");
    port.PutBe32(0, 1234);

    EXPECT_EQ(ValueOf(Float("C")), 12.34);
    ASSERT_TRUE(map->SetFloat(Id("C"), 5.5).IsOK());
    EXPECT_EQ(ValueOf(Integer("R")), 550);
}

TEST_F(ConverterNodeTest, RoundsToTheNearestIntegerBehindIt)
{
    LoadConverter("Converter", "<FormulaTo>FROM/0.0001</FormulaTo><FormulaFrom>TO*0.0001</FormulaFrom>");

    ASSERT_TRUE(map->SetFloat(Id("C"), 0.0029).IsOK()); // 0.0029/0.0001 is 28.999999999999996

    EXPECT_EQ(ValueOf(Integer("Raw")), 29);
}

TEST_F(ConverterNodeTest, ConvertsIntegersExactly)
{
    LoadConverter("IntConverter", "<pVariable Name=\"S\">Step</pVariable><FormulaTo>FROM/S</FormulaTo>"
                                  "<FormulaFrom>TO*S</FormulaFrom>");

    EXPECT_EQ(ValueOf(Integer("C")), 200);
    ASSERT_TRUE(SetInteger("C", 80).IsOK());
    EXPECT_EQ(ValueOf(Integer("Raw")), 20);
}

TEST_F(ConverterNodeTest, ConvertsTheLimitsOfItsTarget)
{
    LoadConverter("IntConverter", "<FormulaTo>FROM/4</FormulaTo><FormulaFrom>TO*4</FormulaFrom>");
    const auto integers = ValueOf(map->GetIntegerLimits(Id("C")));
    EXPECT_EQ(integers.minimum, 4);
    EXPECT_EQ(integers.maximum, 400);
    EXPECT_EQ(integers.increment, 1);

    LoadConverter("Converter", "<FormulaTo>FROM*2</FormulaTo><FormulaFrom>TO/2</FormulaFrom>");
    const auto floats = ValueOf(map->GetFloatLimits(Id("C")));
    EXPECT_EQ(floats.minimum, 0.5);
    EXPECT_EQ(floats.maximum, 50);
    EXPECT_EQ(floats.increment, 0);
}

TEST_F(ConverterNodeTest, SwapsLimitsOfAFallingFormula)
{
    const std::string falling = "<FormulaTo>1000/FROM</FormulaTo><FormulaFrom>1000/TO</FormulaFrom>";
    for (const char* slope :
         {"", "<Slope>Decreasing</Slope>", "<Slope>Automatic</Slope>", "<Slope>Varying</Slope>"}) {
        LoadConverter("Converter", falling + slope);

        const auto limits = ValueOf(map->GetFloatLimits(Id("C")));

        EXPECT_EQ(limits.minimum, 10) << slope;
        EXPECT_EQ(limits.maximum, 1000) << slope;
    }
}

TEST_F(ConverterNodeTest, TakesALimitThatDividesByZeroForNone)
{
    Load("<Converter "
         "Name=\"C\"><FormulaTo>1000/FROM</FormulaTo><FormulaFrom>1000/TO</FormulaFrom><pValue>Raw</pValue>"
         "<Slope>Decreasing</Slope></Converter><Integer "
         "Name=\"Raw\"><Value>4</Value><Min>0</Min><Max>100</Max></Integer>");

    const auto limits = ValueOf(map->GetFloatLimits(Id("C")));

    EXPECT_EQ(limits.minimum, 10);
    EXPECT_EQ(limits.maximum, DBL_MAX);
    EXPECT_TRUE(map->SetFloat(Id("C"), 500).IsOK());
    EXPECT_EQ(ValueOf(Integer("Raw")), 2);
}

TEST_F(ConverterNodeTest, LeavesOpenLimitsOpen)
{
    Load("<Converter "
         "Name=\"C\"><FormulaTo>FROM*100</FormulaTo><FormulaFrom>TO/100</FormulaFrom><pValue>V</pValue>"
         "</Converter><Float Name=\"V\"><Value>1</Value></Float>"
         "<IntConverter "
         "Name=\"I\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO*2</FormulaFrom><pValue>N</pValue>"
         "</IntConverter><Integer Name=\"N\"><Value>1</Value></Integer>");

    EXPECT_EQ(ValueOf(map->GetFloatLimits(Id("C"))).maximum, DBL_MAX);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("I"))).minimum, INT64_MIN);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("I"))).maximum, INT64_MAX);
}

TEST_F(ConverterNodeTest, ConvertsTheIncrementOfALinearFormula)
{
    const std::string target =
        "<pValue>Raw</pValue></Converter><Integer Name=\"Raw\"><Value>10</Value><Min>10</Min>"
        "<Max>100</Max><Inc>5</Inc></Integer>";
    Load("<Converter "
         "Name=\"C\"><FormulaTo>FROM*2</FormulaTo><FormulaFrom>TO/2</FormulaFrom><IsLinear>Yes</IsLinear>" +
         target);

    EXPECT_EQ(ValueOf(map->GetFloatLimits(Id("C"))).increment, 2.5);
}

TEST_F(ConverterNodeTest, ChecksItsLimits)
{
    LoadConverter("Converter", "<FormulaTo>FROM*2</FormulaTo><FormulaFrom>TO/2</FormulaFrom>");

    EXPECT_EQ(CodeOf(map->SetFloat(Id("C"), 50.5)), VxError::OutOfRange);
    EXPECT_TRUE(map->SetFloat(Id("C"), 50).IsOK());
}

TEST_F(ConverterNodeTest, HasTheAccessOfItsTarget)
{
    LoadConverter("Converter", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>");
    EXPECT_EQ(Access("C"), AccessMode::ReadWrite);

    LoadConverter(
        "Converter",
        "<pVariable Name=\"X\">W</pVariable><FormulaTo>FROM</FormulaTo>"
        "<FormulaFrom>TO</FormulaFrom>",
        "<IntReg Name=\"W\"><Address>0</Address><Length>4</Length><AccessMode>WO</AccessMode></IntReg>");
    EXPECT_EQ(Access("C"), AccessMode::NotAvailable);
}

TEST_F(ConverterNodeTest, HandsValuesOnWithoutFormulas)
{
    LoadConverter("Converter", "");

    EXPECT_EQ(ValueOf(Float("C")), 50.0);
    ASSERT_TRUE(map->SetFloat(Id("C"), 7).IsOK());
    EXPECT_EQ(ValueOf(Integer("Raw")), 7);
}

TEST_F(ConverterNodeTest, TakesItsUnitFromItsTarget)
{
    LoadConverter("Converter", "");
    EXPECT_EQ(map->Info(Id("C")).unit, "ticks");

    LoadConverter("Converter", "<Unit>us</Unit>");
    EXPECT_EQ(map->Info(Id("C")).unit, "us");
}

TEST_F(ConverterNodeTest, IsNotImplementedWithoutATarget)
{
    Load("<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom></Converter>");

    EXPECT_EQ(Access("C"), AccessMode::NotImplemented);
}

} // namespace
} // namespace genapi
