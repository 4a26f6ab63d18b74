#include "VxCamera/genapi/node/KnifeNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <cfloat>

namespace genapi {
namespace {

class KnifeNodeTest : public NodeMapFixture {
protected:
    void LoadKnife(std::string_view tag, std::string_view elements, std::string_view others = {})
    {
        Load("<" + std::string(tag) + " Name=\"K\">" + std::string(elements) + "</" + std::string(tag) +
             ">"
             "<Integer Name=\"Three\"><Value>3</Value><Min>-1</Min><Max>99</Max><Inc>2</Inc></Integer>"
             "<Float Name=\"Half\"><Value>0.5</Value><Min>0</Min><Max>7.5</Max></Float>" +
             std::string(others));
    }
};

TEST_F(KnifeNodeTest, ComputesIntegers)
{
    LoadKnife("IntSwissKnife", "<pVariable Name=\"X\">Three</pVariable><Formula>X*10/4</Formula>");

    EXPECT_EQ(ValueOf(Integer("K")), 7);
    EXPECT_EQ(ValueOf(Text("K")), "7");
}

TEST_F(KnifeNodeTest, ComputesFloats)
{
    LoadKnife("SwissKnife", "<pVariable Name=\"X\">Three</pVariable><pVariable Name=\"Y\">Half</pVariable>"
                            "<Formula>X*10/4 + Y</Formula>");

    EXPECT_EQ(ValueOf(Float("K")), 8.0);
    EXPECT_EQ(ValueOf(Integer("K")), 8);
}

TEST_F(KnifeNodeTest, UsesConstantsAndExpressions)
{
    LoadKnife("SwissKnife",
              "<pVariable Name=\"X\">Three</pVariable><Constant Name=\"C\">0x10</Constant>"
              "<Expression Name=\"TWICE\">X*2</Expression><Expression Name=\"SUM\">TWICE+C</Expression>"
              "<Formula>SUM + PI - PI</Formula>");

    EXPECT_EQ(ValueOf(Float("K")), 22.0);
}

TEST_F(KnifeNodeTest, ReadsLimitsOfItsVariables)
{
    LoadKnife("IntSwissKnife",
              "<pVariable Name=\"X.Min\">Three</pVariable><pVariable Name=\"X.Max\">Three</pVariable>"
              "<pVariable Name=\"X.Inc\">Three</pVariable><pVariable Name=\"X.Value\">Three</pVariable>"
              "<Formula>X.Min*1000000 + X.Max*10000 + X.Inc*100 + X.Value</Formula>");

    EXPECT_EQ(ValueOf(Integer("K")), -1000000 + 990000 + 200 + 3);
}

TEST_F(KnifeNodeTest, ReadsLimitsNamedInTheFormulaOnly)
{
    LoadKnife("SwissKnife", "<pVariable Name=\"H\">Half</pVariable><Formula>H.Max - H</Formula>");

    EXPECT_EQ(ValueOf(Float("K")), 7.0);
}

TEST_F(KnifeNodeTest, ReadsNumbersOfEntries)
{
    const std::string mode = "<Enumeration Name=\"Mode\"><EnumEntry Name=\"On\"><Value>5</Value></EnumEntry>"
                             "<Value>5</Value></Enumeration>";
    LoadKnife("IntSwissKnife",
              "<pVariable Name=\"M\">Mode</pVariable><pVariable Name=\"M.Entry.On\">Mode</pVariable>"
              "<Formula>M = M.Entry.On</Formula>",
              mode);
    EXPECT_EQ(ValueOf(Integer("K")), 1);

    LoadKnife("IntSwissKnife", "<pVariable Name=\"M\">Mode</pVariable><Formula>M.Enum.On * 2</Formula>",
              mode);
    EXPECT_EQ(ValueOf(Integer("K")), 10);

    LoadKnife("IntSwissKnife", "<pVariable Name=\"M\">Mode</pVariable><Formula>M.Entry.Off</Formula>", mode);
    EXPECT_EQ(SentenceOf(Integer("K")), "K: Mode: there is no entry \"Off\", which a formula asks for");
}

TEST_F(KnifeNodeTest, ReadsTheAccessOfAVariable)
{
    LoadKnife("IntSwissKnife", "<pVariable Name=\"X\">Three</pVariable><Formula>X.AccessMode</Formula>");

    EXPECT_EQ(ValueOf(Integer("K")), 4); // not implemented 0, not available 1, WO 2, RO 3, RW 4
}

TEST_F(KnifeNodeTest, CanOnlyBeRead)
{
    LoadKnife("IntSwissKnife", "<Formula>1</Formula>");

    EXPECT_EQ(Access("K"), AccessMode::ReadOnly);
    EXPECT_EQ(CodeOf(SetInteger("K", 1)), VxError::NotWritable);
}

TEST_F(KnifeNodeTest, IsNotAvailableWhenAVariableCannotBeRead)
{
    LoadKnife(
        "IntSwissKnife", "<pVariable Name=\"X\">Secret</pVariable><Formula>X</Formula>",
        "<IntReg Name=\"Secret\"><Address>0</Address><Length>4</Length><AccessMode>WO</AccessMode></IntReg>");

    EXPECT_EQ(Access("K"), AccessMode::NotAvailable);
    EXPECT_EQ(CodeOf(Integer("K")), VxError::NotAvailable);
}

TEST_F(KnifeNodeTest, HasNoLimits)
{
    LoadKnife("IntSwissKnife", "<Formula>1</Formula>");
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("K"))).minimum, INT64_MIN);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("K"))).maximum, INT64_MAX);

    LoadKnife("SwissKnife", "<Formula>1</Formula>");
    EXPECT_EQ(ValueOf(map->GetFloatLimits(Id("K"))).maximum, DBL_MAX);
}

TEST_F(KnifeNodeTest, SaysWhatIsWrongWithItsFormula)
{
    LoadKnife("IntSwissKnife", "<Formula>1 +</Formula>");
    EXPECT_EQ(CodeOf(Integer("K")), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(Integer("K")), "K: the formula \"1 +\" is wrong at character 4: a value is missing");

    LoadKnife("IntSwissKnife", "<Formula>1 + WHO</Formula>");
    EXPECT_EQ(SentenceOf(Integer("K")), "K: its formula uses the name \"WHO\", which stands for nothing");

    LoadKnife("IntSwissKnife", "<Formula>1/0</Formula>");
    EXPECT_EQ(SentenceOf(Integer("K")), "K: its formula divides by zero");
}

TEST_F(KnifeNodeTest, IsNotImplementedWithoutAFormula)
{
    LoadKnife("IntSwissKnife", "<pVariable Name=\"X\">Three</pVariable>");

    EXPECT_EQ(Access("K"), AccessMode::NotImplemented);
}

TEST_F(KnifeNodeTest, EndsExpressionsThatReferToEachOther)
{
    LoadKnife("IntSwissKnife",
              "<Expression Name=\"A\">B+B</Expression><Expression Name=\"B\">A+A</Expression>"
              "<Formula>A</Formula>");

    EXPECT_EQ(CodeOf(Integer("K")), VxError::InvalidData);
}

TEST_F(KnifeNodeTest, LetsAVariableNamedLikeAConstantWin)
{
    LoadKnife("SwissKnife", "<pVariable Name=\"E\">Three</pVariable><Formula>E</Formula>");

    EXPECT_EQ(ValueOf(Float("K")), 3.0);
}

TEST_F(KnifeNodeTest, ReadsVisibilityAndCachingOfAVariable)
{
    const char* others =
        "<Integer Name=\"Hidden\"><pValue>Around</pValue><Visibility>Guru</Visibility></Integer>"
        "<IntReg Name=\"Around\"><Address>0</Address><Length>1</Length>"
        "<Cachable>WriteAround</Cachable></IntReg>";
    LoadKnife("IntSwissKnife",
              "<pVariable Name=\"X.Visibility\">Hidden</pVariable><pVariable "
              "Name=\"X.CachingMode\">Hidden</pVariable>"
              "<pVariable Name=\"T\">Three</pVariable>"
              "<Formula>X.Visibility*100 + X.CachingMode*10 + T.CachingMode</Formula>",
              others);

    EXPECT_EQ(ValueOf(Integer("K")),
              221); // Guru 2; WriteAround 2; a variable of the map counts as WriteThrough, 1
}

TEST_F(KnifeNodeTest, CountsAnEnumerationWithItsNumber)
{
    LoadKnife(
        "SwissKnife", "<pVariable Name=\"M\">Mode</pVariable><Formula>M + 0.25</Formula>",
        "<Enumeration Name=\"Mode\"><EnumEntry Name=\"A\"><Value>7</Value><NumericValue>0.5</NumericValue>"
        "</EnumEntry><Value>7</Value></Enumeration>");

    EXPECT_EQ(ValueOf(Float("K")), 7.25);
}

TEST_F(KnifeNodeTest, TakesTheFirstOfTwoVariablesOfOneName)
{
    LoadKnife("IntSwissKnife",
              "<pVariable Name=\"X\">Three</pVariable><pVariable Name=\"X\">Five</pVariable>"
              "<Constant Name=\"C\">10</Constant><Constant Name=\"C\">20</Constant>"
              "<Expression Name=\"Y\">X*2</Expression><Expression Name=\"Y\">X*3</Expression>"
              "<Formula>X + Y + C</Formula>",
              "<Integer Name=\"Five\"><Value>5</Value></Integer>");

    EXPECT_EQ(ValueOf(Integer("K")), 19);
}

} // namespace
} // namespace genapi
