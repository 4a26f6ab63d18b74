#include "VxCamera/genapi/node/IntegerNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

constexpr std::string_view kRegister = "<IntReg Name=\"Reg\"><Address>0</Address><Length>2</Length>"
                                       "<AccessMode>RW</AccessMode><Endianess>BigEndian</Endianess></IntReg>";

class IntegerNodeTest : public NodeMapFixture {
protected:
    void LoadInteger(std::string_view elements, std::string_view others = {})
    {
        Load("<Integer Name=\"I\">" + std::string(elements) + "</Integer>" + std::string(kRegister) +
             std::string(others));
    }
};

TEST_F(IntegerNodeTest, KeepsAVariable)
{
    LoadInteger("<Value>5</Value>");

    EXPECT_EQ(ValueOf(Integer("I")), 5);
    ASSERT_TRUE(SetInteger("I", -6).IsOK());
    EXPECT_EQ(ValueOf(Integer("I")), -6);
    EXPECT_EQ(port.reads + port.writes, 0);
}

TEST_F(IntegerNodeTest, ReadsAndWritesItsTarget)
{
    port.Put(0, {0x01, 0x02});
    LoadInteger("<pValue>Reg</pValue>");

    EXPECT_EQ(ValueOf(Integer("I")), 0x0102);
    ASSERT_TRUE(SetInteger("I", 0x0304).IsOK());
    EXPECT_EQ(port.Get(0, 2), (std::vector{3, 4}));
}

TEST_F(IntegerNodeTest, WritesCopiesThatItNeverReads)
{
    LoadInteger("<pValue>Reg</pValue><pValueCopy>Copy</pValueCopy>",
                "<Integer Name=\"Copy\"><Value>1</Value></Integer>");

    EXPECT_EQ(ValueOf(Integer("I")), 0);
    ASSERT_TRUE(SetInteger("I", 9).IsOK());
    EXPECT_EQ(ValueOf(Integer("Copy")), 9);
}

TEST_F(IntegerNodeTest, ChoosesItsValueByAnIndex)
{
    LoadInteger("<pIndex>Index</pIndex><ValueIndexed Index=\"1\">100</ValueIndexed>"
                "<pValueIndexed Index=\"2\">Reg</pValueIndexed><ValueDefault>-1</ValueDefault>",
                "<Integer Name=\"Index\"><Value>1</Value></Integer>");
    port.Put(0, {0, 42});

    EXPECT_EQ(ValueOf(Integer("I")), 100);
    ASSERT_TRUE(SetInteger("I", 101).IsOK());
    EXPECT_EQ(ValueOf(Integer("I")), 101);

    ASSERT_TRUE(SetInteger("Index", 2).IsOK());
    EXPECT_EQ(ValueOf(Integer("I")), 42);
    ASSERT_TRUE(SetInteger("I", 43).IsOK());
    EXPECT_EQ(port.Get(0, 2), (std::vector{0, 43}));

    ASSERT_TRUE(SetInteger("Index", 3).IsOK());
    EXPECT_EQ(ValueOf(Integer("I")), -1);
}

TEST_F(IntegerNodeTest, IsNotAvailableForAnIndexWithoutValue)
{
    LoadInteger("<pIndex>Index</pIndex><ValueIndexed Index=\"1\">100</ValueIndexed>",
                "<Integer Name=\"Index\"><Value>7</Value></Integer>");

    EXPECT_EQ(Access("I"), AccessMode::NotAvailable);
    EXPECT_EQ(CodeOf(Integer("I")), VxError::NotAvailable);
}

TEST_F(IntegerNodeTest, TakesLimitsOfItsTarget)
{
    LoadInteger("<pValue>Reg</pValue>");

    const auto limits = ValueOf(map->GetIntegerLimits(Id("I")));

    EXPECT_EQ(limits.minimum, 0);
    EXPECT_EQ(limits.maximum, 65535);
    EXPECT_EQ(limits.increment, 1);
}

TEST_F(IntegerNodeTest, PutsItsOwnLimitsInPlaceOfItsTargets)
{
    LoadInteger(
        "<pValue>Reg</pValue><Min>16</Min><pMax>Max</pMax><pInc>Inc</pInc>",
        "<Integer Name=\"Max\"><Value>640</Value></Integer><Integer Name=\"Inc\"><Value>8</Value></Integer>");

    const auto limits = ValueOf(map->GetIntegerLimits(Id("I")));

    EXPECT_EQ(limits.minimum, 16);
    EXPECT_EQ(limits.maximum, 640);
    EXPECT_EQ(limits.increment, 8);
}

TEST_F(IntegerNodeTest, HasAllIntegersAsAVariable)
{
    LoadInteger("<Value>0</Value>");

    const auto limits = ValueOf(map->GetIntegerLimits(Id("I")));

    EXPECT_EQ(limits.minimum, INT64_MIN);
    EXPECT_EQ(limits.maximum, INT64_MAX);
}

TEST_F(IntegerNodeTest, RefusesValuesOutOfRange)
{
    LoadInteger("<pValue>Reg</pValue><Min>16</Min><Max>640</Max>");

    const auto result = SetInteger("I", 641);

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "I: 641 is out of range; it must be from 16 to 640");
    EXPECT_EQ(CodeOf(SetInteger("I", 15)), VxError::OutOfRange);
    EXPECT_TRUE(SetInteger("I", 16).IsOK());
    EXPECT_TRUE(SetInteger("I", 640).IsOK());
    EXPECT_EQ(port.writes, 2);
}

TEST_F(IntegerNodeTest, RefusesValuesBetweenIncrements)
{
    LoadInteger("<pValue>Reg</pValue><Min>10</Min><Max>640</Max><Inc>8</Inc>");

    const auto result = SetInteger("I", 16);

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "I: 16 is not allowed; it must be 10 plus a multiple of 8");
    EXPECT_TRUE(SetInteger("I", 18).IsOK());
}

TEST_F(IntegerNodeTest, ChecksIncrementsOverTheWholeRange)
{
    LoadInteger("<Value>0</Value><Inc>3</Inc>");

    EXPECT_TRUE(SetInteger("I", INT64_MAX).IsOK()); // 2^64 - 1 is a multiple of 3
    EXPECT_EQ(CodeOf(SetInteger("I", INT64_MAX - 1)), VxError::OutOfRange);
}

TEST_F(IntegerNodeTest, ChecksTheLimitsOfItsTarget)
{
    LoadInteger("<pValue>Reg</pValue><Min>0</Min><Max>100000</Max>");

    EXPECT_EQ(CodeOf(SetInteger("I", 65536)), VxError::OutOfRange);
}

TEST_F(IntegerNodeTest, LeavesContradictingLimitsToTheCamera)
{
    LoadInteger("<pValue>Reg</pValue><Min>10</Min><Max>5</Max>");

    EXPECT_TRUE(SetInteger("I", 7).IsOK());
}

TEST_F(IntegerNodeTest, LeavesLimitsThatCannotBeReadToTheCamera)
{
    LoadInteger("<pValue>Reg</pValue><pMax>Bad</pMax>",
                "<IntSwissKnife Name=\"Bad\"><Formula>1/0</Formula></IntSwissKnife>");

    EXPECT_EQ(CodeOf(map->GetIntegerLimits(Id("I"))), VxError::InvalidData);
    EXPECT_TRUE(SetInteger("I", 7).IsOK());
}

TEST_F(IntegerNodeTest, TakesAMaximumOfAllBitsForNone)
{
    LoadInteger("<Value>0</Value><Min>0</Min><Max>0xFFFFFFFFFFFFFFFF</Max>");

    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("I"))).maximum, INT64_MAX);
}

TEST_F(IntegerNodeTest, AcceptsOnlyItsValidValues)
{
    LoadInteger("<Value>1</Value><ValidValueSet>1;2; 4</ValidValueSet>");

    EXPECT_TRUE(SetInteger("I", 4).IsOK());
    const auto result = SetInteger("I", 3);

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "I: 3 is not allowed; it must be one of 1 2 4");
}

TEST_F(IntegerNodeTest, SeparatesValidValuesByCommasAndBlanksAsWell)
{
    LoadInteger("<Value>1</Value><ValidValueSet>0x1, 2  -4</ValidValueSet>");

    EXPECT_TRUE(SetInteger("I", -4).IsOK());
    EXPECT_TRUE(SetInteger("I", 2).IsOK());
    EXPECT_EQ(CodeOf(SetInteger("I", 4)), VxError::OutOfRange);
}

TEST_F(IntegerNodeTest, NamesTheFirstOfManyValidValues)
{
    std::string values;
    std::string shown;
    for (int i = 1; i <= 100; ++i) {
        values += std::to_string(i) + ";";
        shown += i <= 40 ? " " + std::to_string(i) : "";
    }
    LoadInteger("<Value>1</Value><ValidValueSet>" + values + "</ValidValueSet>");

    EXPECT_TRUE(SetInteger("I", 100).IsOK());
    EXPECT_EQ(SentenceOf(SetInteger("I", 0)),
              "I: 0 is not allowed; it must be one of" + shown + " and 60 more");
}

TEST_F(IntegerNodeTest, IsNotImplementedWithFarTooManyValidValues)
{
    std::string values;
    for (int i = 0; i < 10'001; ++i)
        values += "1;";
    LoadInteger("<Value>1</Value><ValidValueSet>" + values + "</ValidValueSet>");

    EXPECT_EQ(Access("I"), AccessMode::NotImplemented);
}

TEST_F(IntegerNodeTest, TakesUnitAndRepresentationFromItsTarget)
{
    LoadInteger("<pValue>Middle</pValue>",
                "<Integer Name=\"Middle\"><pValue>Hex</pValue></Integer>"
                "<IntReg Name=\"Hex\"><Address>8</Address><Length>4</Length><Unit>px</Unit>"
                "<Representation>HexNumber</Representation></IntReg>");

    EXPECT_EQ(map->Info(Id("I")).unit, "px");
    EXPECT_EQ(ValueOf(Text("I")), "0x0");
}

TEST_F(IntegerNodeTest, ReadsEnumerationsAndBooleansAsNumbers)
{
    LoadInteger("<pValue>E</pValue>",
                "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>7</Value></EnumEntry>"
                "<EnumEntry Name=\"B\"><Value>9</Value></EnumEntry><Value>7</Value></Enumeration>"
                "<Integer Name=\"J\"><pValue>B</pValue></Integer>"
                "<Boolean Name=\"B\"><Value>true</Value></Boolean>");

    EXPECT_EQ(ValueOf(Integer("I")), 7);
    EXPECT_EQ(ValueOf(Integer("J")), 1);
    EXPECT_TRUE(SetInteger("I", 9).IsOK());
    EXPECT_EQ(ValueOf(Text("E")), "B");
    EXPECT_EQ(CodeOf(SetInteger("I", 8)), VxError::OutOfRange);
}

TEST_F(IntegerNodeTest, IsNotImplementedWithoutAValue)
{
    LoadInteger("<Min>0</Min>");

    EXPECT_EQ(Access("I"), AccessMode::NotImplemented);
    EXPECT_EQ(CodeOf(Integer("I")), VxError::NotSupported);
    EXPECT_EQ(SentenceOf(Integer("I")), "I: it has neither a value nor a node that gives one");
}

TEST_F(IntegerNodeTest, IsNotImplementedWithANumberThatIsNone)
{
    LoadInteger("<Value>many</Value>");

    EXPECT_EQ(SentenceOf(Integer("I")), "I: its Value \"many\" is no integer");
    ASSERT_EQ(map->Notices().size(), 1u);
    EXPECT_EQ(map->Notices()[0].node, "I");
}

TEST_F(IntegerNodeTest, IsNotImplementedWithATargetThatIsMissing)
{
    LoadInteger("<pValue>Nobody</pValue>");

    EXPECT_EQ(Access("I"), AccessMode::NotImplemented);
    EXPECT_EQ(SentenceOf(Integer("I")),
              "I: its pValue names the node \"Nobody\", which the camera's description does not have");
}

TEST_F(IntegerNodeTest, IgnoresElementsThatAreEmpty)
{
    LoadInteger("<Value>3</Value><Min></Min><pIsAvailable/><pIsLocked> </pIsLocked>");

    EXPECT_EQ(ValueOf(Integer("I")), 3);
}

} // namespace
} // namespace genapi
