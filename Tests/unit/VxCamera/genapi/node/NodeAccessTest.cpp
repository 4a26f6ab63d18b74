#include "VxCamera/genapi/node/Node.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

/// A node "N" over a register of the given access, with conditions; "Zero" and "One" are constants.
class NodeAccessTest : public NodeMapFixture {
protected:
    void LoadNode(std::string_view registerAccess, std::string_view conditions, std::string_view others = {})
    {
        Load("<Integer Name=\"N\"><pValue>R</pValue>" + std::string(conditions) +
             "</Integer>"
             "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>" +
             std::string(registerAccess) +
             "</AccessMode></IntReg><Integer Name=\"Zero\"><Value>0</Value></Integer>"
             "<Integer Name=\"One\"><Value>1</Value></Integer>" +
             std::string(others));
    }
};

TEST_F(NodeAccessTest, FollowsTheRegister)
{
    LoadNode("RO", "");
    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
    LoadNode("WO", "");
    EXPECT_EQ(Access("N"), AccessMode::WriteOnly);
    LoadNode("RW", "");
    EXPECT_EQ(Access("N"), AccessMode::ReadWrite);
}

TEST_F(NodeAccessTest, IsReadOnlyForARegisterThatDoesNotSay)
{
    Load("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length></IntReg>");

    EXPECT_EQ(Access("R"), AccessMode::ReadOnly);
}

TEST_F(NodeAccessTest, ImposesARestriction)
{
    LoadNode("RW", "<ImposedAccessMode>RO</ImposedAccessMode>");
    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
    LoadNode("RO", "<ImposedAccessMode>WO</ImposedAccessMode>");
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);
    LoadNode("RO", "<ImposedAccessMode>RW</ImposedAccessMode>");
    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
}

TEST_F(NodeAccessTest, TakesWritingAwayWhileLocked)
{
    LoadNode("RW", "<pIsLocked>One</pIsLocked>");
    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
    LoadNode("WO", "<pIsLocked>One</pIsLocked>");
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);
    LoadNode("RW", "<pIsLocked>Zero</pIsLocked>");
    EXPECT_EQ(Access("N"), AccessMode::ReadWrite);
}

TEST_F(NodeAccessTest, IsNotAvailableWhileItsConditionIsZero)
{
    LoadNode("RW", "<pIsAvailable>Zero</pIsAvailable>");
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);
    LoadNode("RW", "<pIsAvailable>One</pIsAvailable>");
    EXPECT_EQ(Access("N"), AccessMode::ReadWrite);
}

TEST_F(NodeAccessTest, IsNotImplementedWhateverElseHolds)
{
    LoadNode("RW", "<pIsImplemented>Zero</pIsImplemented><pIsAvailable>Zero</pIsAvailable>");

    EXPECT_EQ(Access("N"), AccessMode::NotImplemented);
}

TEST_F(NodeAccessTest, TakesAnyKindOfNumberForACondition)
{
    const std::string others =
        "<Boolean Name=\"Yes\"><Value>true</Value></Boolean>"
        "<Boolean Name=\"No\"><Value>false</Value></Boolean>"
        "<Enumeration Name=\"Off\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
        "<Value>0</Value></Enumeration>"
        "<Enumeration Name=\"Two\"><EnumEntry Name=\"Two\"><Value>2</Value></EnumEntry>"
        "<Value>2</Value></Enumeration><Float Name=\"Half\"><Value>0.6</Value></Float>";
    for (const char* name : {"Yes", "Two", "Half"}) {
        LoadNode("RW", "<pIsAvailable>" + std::string(name) + "</pIsAvailable>", others);
        EXPECT_EQ(Access("N"), AccessMode::ReadWrite) << name;
    }
    for (const char* name : {"No", "Off"}) {
        LoadNode("RW", "<pIsAvailable>" + std::string(name) + "</pIsAvailable>", others);
        EXPECT_EQ(Access("N"), AccessMode::NotAvailable) << name;
    }
}

TEST_F(NodeAccessTest, TakesConditionsThatCannotBeReadForFalse)
{
    const std::string bad = "<IntSwissKnife Name=\"Bad\"><Formula>1/0</Formula></IntSwissKnife>";
    LoadNode("RW", "<pIsImplemented>Bad</pIsImplemented>", bad);
    EXPECT_EQ(Access("N"), AccessMode::NotImplemented);
    LoadNode("RW", "<pIsAvailable>Bad</pIsAvailable>", bad);
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);
    LoadNode("RW", "<pIsLocked>Bad</pIsLocked>", bad);
    EXPECT_EQ(Access("N"), AccessMode::ReadWrite);
}

TEST_F(NodeAccessTest, FollowsConditionsOfTheNodesBehind)
{
    Load("<Integer Name=\"N\"><pValue>Middle</pValue></Integer>"
         "<Integer Name=\"Middle\"><pValue>R</pValue><pIsAvailable>A</pIsAvailable></Integer>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
         "<pIsLocked>L</pIsLocked></IntReg><Integer Name=\"A\"><Value>1</Value></Integer>"
         "<Integer Name=\"L\"><Value>0</Value></Integer>");

    EXPECT_EQ(Access("N"), AccessMode::ReadWrite);
    ASSERT_TRUE(SetInteger("L", 1).IsOK());
    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
    ASSERT_TRUE(SetInteger("A", 0).IsOK());
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);
}

TEST_F(NodeAccessTest, SaysWhyANodeCannotBeUsed)
{
    LoadNode("RW", "<pIsAvailable>Zero</pIsAvailable>");
    EXPECT_EQ(CodeOf(Integer("N")), VxError::NotAvailable);
    EXPECT_EQ(SentenceOf(Integer("N")), "N: it is not available in the present state of the camera");
    EXPECT_EQ(CodeOf(SetInteger("N", 1)), VxError::NotAvailable);

    LoadNode("RW", "<pIsImplemented>Zero</pIsImplemented>");
    EXPECT_EQ(CodeOf(Integer("N")), VxError::NotSupported);
    EXPECT_EQ(SentenceOf(Integer("N")), "N: this camera does not have it");
    EXPECT_EQ(CodeOf(SetInteger("N", 1)), VxError::NotSupported);

    LoadNode("WO", "");
    EXPECT_EQ(CodeOf(Integer("N")), VxError::NotReadable);
    EXPECT_EQ(SentenceOf(Integer("N")), "N: it can only be written");

    LoadNode("RO", "");
    EXPECT_EQ(CodeOf(SetInteger("N", 1)), VxError::NotWritable);
    EXPECT_EQ(SentenceOf(SetInteger("N", 1)), "N: it can only be read");

    LoadNode("RW", "<pIsLocked>One</pIsLocked>");
    EXPECT_EQ(CodeOf(SetInteger("N", 1)), VxError::NotWritable);
    EXPECT_EQ(SentenceOf(SetInteger("N", 1)),
              "N: it cannot be written now: \"One\" locks it, for instance while the camera streams");
    EXPECT_EQ(port.reads + port.writes, 0);
}

TEST_F(NodeAccessTest, EndsConditionsThatLeadToEachOther)
{
    Load("<Integer Name=\"A\"><Value>1</Value><pIsAvailable>B</pIsAvailable></Integer>"
         "<Integer Name=\"B\"><pValue>C</pValue><pIsLocked>A</pIsLocked></Integer>"
         "<IntSwissKnife Name=\"C\"><pVariable Name=\"X\">A</pVariable><Formula>X</Formula>"
         "<pIsAvailable>C</pIsAvailable></IntSwissKnife>");

    EXPECT_EQ(ValueOf(Integer("A")), 1);
    EXPECT_EQ(ValueOf(Integer("C")), 1);
}

TEST_F(NodeAccessTest, ReadsTheCommonElements)
{
    Load("<Integer "
         "Name=\"N\"><ToolTip>short</ToolTip><Description>long</Description><DisplayName>Shown</DisplayName>"
         "<Visibility>Guru</Visibility><IsDeprecated>Yes</IsDeprecated><Streamable>Yes</Streamable><Value>1</"
         "Value>"
         "<Unit>px</Unit><Representation>HexNumber</Representation></Integer><Integer "
         "Name=\"P\"><Value>1</Value></Integer>");

    const NodeInfo& info = map->Info(Id("N"));
    EXPECT_EQ(info.toolTip, "short");
    EXPECT_EQ(info.description, "long");
    EXPECT_EQ(info.displayName, "Shown");
    EXPECT_EQ(info.visibility, Visibility::Guru);
    EXPECT_EQ(info.unit, "px");
    EXPECT_EQ(info.representation, Representation::HexNumber);
    EXPECT_TRUE(info.isDeprecated);
    EXPECT_TRUE(info.isStreamable);
    const NodeInfo& plain = map->Info(Id("P"));
    EXPECT_EQ(plain.displayName, "P");
    EXPECT_EQ(plain.visibility, Visibility::Beginner);
    EXPECT_FALSE(plain.isStreamable);
}

TEST_F(NodeAccessTest, ReadsFurtherCommonElements)
{
    Load("<Integer Name=\"Raw\"><Value>1</Value><DocuURL>http://example.org/raw</DocuURL><pAlias>Abs</pAlias>"
         "<pCastAlias>Text</pCastAlias><PollingTime>250</PollingTime></Integer>"
         "<Float Name=\"Abs\"><Value>0.5</Value><pAlias>Raw</pAlias><pAlias>Gone</pAlias></Float>"
         "<String Name=\"Text\"><Value>one</Value></String>");

    EXPECT_EQ(map->Info(Id("Raw")).docuUrl, "http://example.org/raw");
    EXPECT_EQ(map->Alias(Id("Raw")), Id("Abs"));
    EXPECT_EQ(map->Alias(Id("Abs")), Id("Raw")); // the other one is not there
    EXPECT_EQ(map->CastAlias(Id("Raw")), Id("Text"));
    EXPECT_FALSE(map->Alias(Id("Text")));
    EXPECT_FALSE(map->CastAlias(Id("Abs")));
    EXPECT_EQ(map->PollingMs(Id("Raw")), 250u);
    EXPECT_EQ(map->PollingMs(Id("Abs")), 0u);
}

TEST_F(NodeAccessTest, AsksTheCastAliasForAnotherType)
{
    Load("<String Name=\"Text\"><Value>one</Value><pCastAlias>Number</pCastAlias></String>"
         "<Integer "
         "Name=\"Number\"><Value>1</Value><Min>0</Min><Max>9</Max><pCastAlias>Text</pCastAlias></Integer>");

    EXPECT_EQ(ValueOf(Integer("Text")), 1);
    EXPECT_EQ(ValueOf(Float("Text")), 1.0);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("Text"))).maximum, 9);
    EXPECT_EQ(ValueOf(map->GetString(Id("Number"))), "one");
    ASSERT_TRUE(SetInteger("Text", 5).IsOK());
    EXPECT_EQ(ValueOf(Integer("Number")), 5);
    EXPECT_EQ(CodeOf(SetInteger("Text", 10)), VxError::OutOfRange);
    EXPECT_EQ(ValueOf(Text("Text")), "one");
    EXPECT_EQ(CodeOf(map->GetBytes(Id("Text"))),
              VxError::InvalidData); // each leads to the other, without end
}

TEST_F(NodeAccessTest, TellsOfAnErrorThatTheCameraReportsAfterAWrite)
{
    LoadNode("RW", "<pError>Fault</pError>",
             "<Enumeration Name=\"Fault\"><EnumEntry Name=\"None\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"TooHot\"><Value>2</Value></EnumEntry><pValue>FaultReg</pValue></Enumeration>"
             "<IntReg Name=\"FaultReg\"><Address>8</Address><Length>1</Length></IntReg>");
    EXPECT_TRUE(SetInteger("N", 1).IsOK());

    port.Put(8, {2});
    const auto result = SetInteger("N", 3);

    EXPECT_EQ(CodeOf(result), VxError::CameraError);
    EXPECT_EQ(SentenceOf(result), "N: the camera has taken it, and tells of an error: \"Fault\" is TooHot");
    EXPECT_EQ(port.Get(0, 1), (std::vector{3}));
    port.Put(8, {7});
    EXPECT_EQ(SentenceOf(SetInteger("N", 3)),
              "N: the camera has taken it, and tells of an error: \"Fault\" is 7");
    port.Put(8, {0});
    EXPECT_TRUE(SetInteger("N", 4).IsOK());
}

TEST_F(NodeAccessTest, TakesAConditionThatIsNotAvailableForFalse)
{
    LoadNode("RW", "<pIsAvailable>Condition</pIsAvailable>",
             "<Integer Name=\"Condition\"><Value>1</Value><pIsAvailable>Zero</pIsAvailable></Integer>");
    EXPECT_EQ(Access("N"), AccessMode::NotAvailable);

    LoadNode("RW", "<pIsImplemented>Condition</pIsImplemented>",
             "<IntReg "
             "Name=\"Condition\"><Address>4</Address><Length>1</Length><AccessMode>WO</AccessMode></IntReg>");
    EXPECT_EQ(Access("N"), AccessMode::NotImplemented);
}

TEST_F(NodeAccessTest, TakesAFloatThatIsNotZeroForTrue)
{
    LoadNode("RW", "<pIsLocked>Little</pIsLocked>", "<Float Name=\"Little\"><Value>0.25</Value></Float>");

    EXPECT_EQ(Access("N"), AccessMode::ReadOnly);
}

} // namespace
} // namespace genapi
