#include "VxCamera/genapi/map/DependencyGraph.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

std::string Reg(std::string_view name, int address, std::string_view elements = {})
{
    return "<IntReg Name=\"" + std::string(name) + "\"><Address>" + std::to_string(address) +
           "</Address><Length>1</Length><AccessMode>RW</AccessMode>" + std::string(elements) + "</IntReg>";
}

class InvalidationTest : public NodeMapFixture {};

TEST_F(InvalidationTest, ReadsAgainWhatNamesTheChangedNode)
{
    Load(Reg("A", 0) + Reg("B", 1, "<pInvalidator>A</pInvalidator>") + Reg("C", 2));
    ASSERT_EQ(ValueOf(Integer("B")), 0);
    ASSERT_EQ(ValueOf(Integer("C")), 0);
    port.Put(1, {5, 6});

    ASSERT_TRUE(SetInteger("A", 1).IsOK());

    EXPECT_EQ(ValueOf(Integer("B")), 5);
    EXPECT_EQ(ValueOf(Integer("C")), 0); // nobody said that it changed
}

TEST_F(InvalidationTest, FollowsTheFeatureAboveTheChangedRegister)
{
    Load(
        "<Enumeration Name=\"Sel\"><EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><pValue>SelReg</pValue>"
        "</Enumeration>" +
        Reg("SelReg", 0) + Reg("B", 1, "<pInvalidator>Sel</pInvalidator>"));
    ASSERT_EQ(ValueOf(Integer("B")), 0);
    port.Put(1, {5});

    ASSERT_TRUE(SetText("Sel", "On").IsOK());

    EXPECT_EQ(ValueOf(Integer("B")), 5);
}

TEST_F(InvalidationTest, ReadsTheRegisterBehindAnInvalidatedFeatureAgain)
{
    Load(Reg("A", 0) +
         "<Integer Name=\"F\"><pValue>G</pValue><pInvalidator>A</pInvalidator></Integer>"
         "<Integer Name=\"G\"><pValue>B</pValue></Integer>" +
         Reg("B", 1));
    ASSERT_EQ(ValueOf(Integer("F")), 0);
    port.Put(1, {5});

    ASSERT_TRUE(SetInteger("A", 1).IsOK());

    EXPECT_EQ(ValueOf(Integer("F")), 5);
}

TEST_F(InvalidationTest, ReadsSelectedFeaturesAgain)
{
    Load("<Integer Name=\"Sel\"><pValue>SelReg</pValue><pSelected>Gain</pSelected></Integer>" +
         Reg("SelReg", 0) + "<Float Name=\"Gain\"><pValue>GainReg</pValue></Float>" + Reg("GainReg", 1));
    ASSERT_EQ(ValueOf(Float("Gain")), 0);
    port.Put(1, {7});

    ASSERT_TRUE(SetInteger("Sel", 1).IsOK());

    EXPECT_EQ(ValueOf(Float("Gain")), 7);
}

TEST_F(InvalidationTest, ReadsAgainAfterACommandThatIsNamed)
{
    Load("<Command Name=\"UserSetLoad\"><pValue>LoadReg</pValue><CommandValue>1</CommandValue></Command>" +
         Reg("LoadReg", 0) + Reg("Width", 1, "<pInvalidator>UserSetLoad</pInvalidator>"));
    ASSERT_EQ(ValueOf(Integer("Width")), 0);
    port.Put(1, {9});

    ASSERT_TRUE(map->Execute(Id("UserSetLoad")).IsOK());

    EXPECT_EQ(ValueOf(Integer("Width")), 9);
}

TEST_F(InvalidationTest, GoesFromOneChangeToTheNext)
{
    Load(Reg("A", 0) + Reg("B", 1, "<pInvalidator>A</pInvalidator>") +
         Reg("C", 2, "<pInvalidator>B</pInvalidator>") + Reg("D", 3, "<pInvalidator>K</pInvalidator>") +
         "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">C</pVariable><Formula>X</Formula></IntSwissKnife>");
    for (const char* name : {"B", "C", "D"})
        std::ignore = Integer(name);
    port.Put(1, {1, 2, 3});

    ASSERT_TRUE(SetInteger("A", 1).IsOK());

    EXPECT_EQ(ValueOf(Integer("B")), 1);
    EXPECT_EQ(ValueOf(Integer("C")), 2);
    EXPECT_EQ(ValueOf(Integer("D")), 3);
}

TEST_F(InvalidationTest, ReadsAgainWhatTheChangedNodeLimits)
{
    Load("<Integer Name=\"Offset\"><pValue>OffsetReg</pValue><pMax>Max</pMax></Integer>" +
         Reg("OffsetReg", 1) +
         "<IntSwissKnife Name=\"Max\"><pVariable "
         "Name=\"W\">Width</pVariable><Formula>100-W</Formula></IntSwissKnife>" +
         Reg("Width", 0));
    ASSERT_EQ(ValueOf(Integer("Offset")), 0);
    port.Put(1, {4}); // the camera moves the window

    ASSERT_TRUE(SetInteger("Width", 96).IsOK());

    EXPECT_EQ(ValueOf(Integer("Offset")), 4);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("Offset"))).maximum, 4);
}

TEST_F(InvalidationTest, KeepsWhatALockOnlyLocks)
{
    Load("<Integer Name=\"Lock\"><Value>0</Value></Integer>" + Reg("A", 0, "<pIsLocked>Lock</pIsLocked>"));
    std::ignore = Integer("A");

    ASSERT_TRUE(SetInteger("Lock", 1).IsOK());
    std::ignore = Integer("A");

    EXPECT_EQ(port.reads, 1);
    EXPECT_EQ(Access("A"), AccessMode::ReadOnly);
}

TEST_F(InvalidationTest, KeepsTheValueThatWasWritten)
{
    Load(Reg("A", 0, "<pInvalidator>B</pInvalidator>") + Reg("B", 1, "<pInvalidator>A</pInvalidator>"));

    ASSERT_TRUE(SetInteger("A", 1).IsOK());
    std::ignore = Integer("A");

    EXPECT_EQ(port.reads, 0);
}

TEST_F(InvalidationTest, ListsSelectorsAndWhatTheySelect)
{
    Load("<Integer Name=\"S\"><Value>0</Value><pSelected>F</pSelected><pSelected>Gone</pSelected></Integer>"
         "<Integer Name=\"T\"><Value>0</Value><pSelected>F</pSelected></Integer><Integer "
         "Name=\"F\"><Value>0</Value></Integer>");

    ASSERT_EQ(map->Selected(Id("S")).size(), 1u);
    EXPECT_EQ(map->Selected(Id("S"))[0], Id("F"));
    EXPECT_EQ(map->Selectors(Id("F")).size(), 2u);
    EXPECT_TRUE(map->Selectors(Id("S")).empty());
}

} // namespace
} // namespace genapi
