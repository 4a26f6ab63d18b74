#include "VxCamera/genapi/node/FloatNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <cfloat>

namespace genapi {
namespace {

class FloatNodeTest : public NodeMapFixture {
protected:
    void LoadFloat(std::string_view elements, std::string_view others = {})
    {
        Load("<Float Name=\"F\">" + std::string(elements) +
             "</Float>"
             "<IntReg "
             "Name=\"Reg\"><Address>0</Address><Length>2</Length><AccessMode>RW</AccessMode></IntReg>" +
             std::string(others));
    }
};

TEST_F(FloatNodeTest, KeepsAVariable)
{
    LoadFloat("<Value>0.25</Value>");

    EXPECT_EQ(ValueOf(Float("F")), 0.25);
    ASSERT_TRUE(map->SetFloat(Id("F"), -1e10).IsOK());
    EXPECT_EQ(ValueOf(Text("F")), "-10000000000");
}

TEST_F(FloatNodeTest, ReadsAnIntegerAndWritesItRounded)
{
    LoadFloat("<pValue>Reg</pValue>");

    ASSERT_TRUE(map->SetFloat(Id("F"), 9.7).IsOK());

    EXPECT_EQ(ValueOf(Integer("Reg")), 10);
    EXPECT_EQ(ValueOf(Float("F")), 10.0);
}

TEST_F(FloatNodeTest, TakesLimitsOfItsTarget)
{
    LoadFloat("<pValue>Reg</pValue>");

    const auto limits = ValueOf(map->GetFloatLimits(Id("F")));

    EXPECT_EQ(limits.minimum, 0);
    EXPECT_EQ(limits.maximum, 65535);
}

TEST_F(FloatNodeTest, HasAllFloatsAsAVariable)
{
    LoadFloat("<Value>0</Value>");

    const auto limits = ValueOf(map->GetFloatLimits(Id("F")));

    EXPECT_EQ(limits.minimum, -DBL_MAX);
    EXPECT_EQ(limits.maximum, DBL_MAX);
    EXPECT_EQ(limits.increment, 0);
}

TEST_F(FloatNodeTest, RefusesValuesOutOfRange)
{
    LoadFloat("<Value>1</Value><Min>0.5</Min><pMax>M</pMax>",
              "<Integer Name=\"M\"><Value>2</Value></Integer>");

    const auto result = map->SetFloat(Id("F"), 2.01);

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "F: 2.01 is out of range; it must be from 0.5 to 2");
    EXPECT_TRUE(map->SetFloat(Id("F"), 2).IsOK());
}

TEST_F(FloatNodeTest, MovesValuesOntoALimitThatTheyMissByRounding)
{
    LoadFloat("<Value>1</Value><Min>0.1</Min><Max>0.3</Max>");

    ASSERT_TRUE(map->SetFloat(Id("F"), 0.1 + 0.2).IsOK()); // a little more than 0.3

    EXPECT_EQ(ValueOf(Float("F")), 0.3);
}

TEST_F(FloatNodeTest, ChecksItsOwnIncrement)
{
    LoadFloat("<Value>1</Value><Min>0</Min><Max>10</Max><Inc>0.1</Inc>");

    EXPECT_TRUE(map->SetFloat(Id("F"), 0.3).IsOK());
    EXPECT_TRUE(map->SetFloat(Id("F"), 9.9).IsOK());
    EXPECT_EQ(CodeOf(map->SetFloat(Id("F"), 0.35)), VxError::OutOfRange);
}

TEST_F(FloatNodeTest, ChoosesItsValueByAnIndex)
{
    LoadFloat(
        "<pIndex>Index</pIndex><ValueIndexed Index=\"0\">1.5</ValueIndexed><ValueDefault>2.5</ValueDefault>",
        "<Integer Name=\"Index\"><Value>0</Value></Integer>");

    EXPECT_EQ(ValueOf(Float("F")), 1.5);
    ASSERT_TRUE(SetInteger("Index", 5).IsOK());
    EXPECT_EQ(ValueOf(Float("F")), 2.5);
}

TEST_F(FloatNodeTest, WritesTheDigitsOfTheRegisterBehindIt)
{
    LoadFloat("<pValue>Middle</pValue>", "<Float Name=\"Middle\"><pValue>FReg</pValue></Float>"
                                         "<FloatReg Name=\"FReg\"><Address>4</Address><Length>4</Length>"
                                         "<AccessMode>RW</AccessMode></FloatReg>");

    ASSERT_TRUE(SetText("F", "0.1").IsOK());

    EXPECT_EQ(ValueOf(Text("F")), "0.1");
}

TEST_F(FloatNodeTest, RefusesNumbersTooLargeForAnInteger)
{
    LoadFloat("<pValue>V</pValue>", "<Integer Name=\"V\"><Value>0</Value></Integer>");

    EXPECT_EQ(CodeOf(map->SetFloat(Id("F"), 1e19)), VxError::OutOfRange);
    EXPECT_EQ(CodeOf(map->SetFloat(Id("F"), -1e19)), VxError::OutOfRange);
}

TEST_F(FloatNodeTest, TakesInfiniteLimits)
{
    LoadFloat("<Value>0</Value><Min>-INF</Min><Max>INF</Max>");

    EXPECT_TRUE(map->SetFloat(Id("F"), 1e300).IsOK());
}

TEST_F(FloatNodeTest, TellsHowItIsBestShown)
{
    Load("<Float Name=\"Own\"><Value>1</Value><DisplayNotation>Scientific</DisplayNotation>"
         "<DisplayPrecision>3</DisplayPrecision><Unit>dB</Unit><Representation>Logarithmic</Representation></"
         "Float>"
         "<Float Name=\"Inherited\"><pValue>Own</pValue><DisplayPrecision>2</DisplayPrecision></Float>"
         "<Float Name=\"Plain\"><Value>1</Value></Float>");

    EXPECT_EQ(map->Info(Id("Own")).displayNotation, DisplayNotation::Scientific);
    EXPECT_EQ(map->Info(Id("Own")).displayPrecision, 3);
    EXPECT_EQ(map->Info(Id("Inherited")).displayNotation, DisplayNotation::Scientific);
    EXPECT_EQ(map->Info(Id("Inherited")).displayPrecision, 2);
    EXPECT_EQ(map->Info(Id("Inherited")).unit, "dB");
    EXPECT_EQ(map->Info(Id("Inherited")).representation, Representation::Logarithmic);
    EXPECT_FALSE(map->Info(Id("Plain")).displayNotation);
    EXPECT_FALSE(map->Info(Id("Plain")).displayPrecision);
}

} // namespace
} // namespace genapi
