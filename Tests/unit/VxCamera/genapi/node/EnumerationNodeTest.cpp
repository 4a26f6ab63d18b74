#include "VxCamera/genapi/node/EnumerationNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <gmock/gmock.h>

namespace genapi {
namespace {

class EnumerationNodeTest : public NodeMapFixture {
protected:
    EnumerationNodeTest()
    {
        Load("<Enumeration Name=\"Mode\">"
             "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"Once\"><Value>1</Value><pIsAvailable>HasOnce</pIsAvailable></EnumEntry>"
             "<EnumEntry "
             "Name=\"EnumEntry_Mode_Always\"><Value>0x10</Value><Symbolic>Always</Symbolic></EnumEntry>"
             "<EnumEntry Name=\"Never\"><Value>3</Value><pIsImplemented>No</pIsImplemented></EnumEntry>"
             "<pValue>Reg</pValue></Enumeration>"
             "<IntReg Name=\"Reg\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>"
             "<Integer Name=\"HasOnce\"><Value>1</Value></Integer><Integer "
             "Name=\"No\"><Value>0</Value></Integer>");
    }
};

TEST_F(EnumerationNodeTest, ListsEntriesInTheOrderOfTheDescription)
{
    std::vector<std::string> names;
    std::vector<std::int64_t> values;
    for (const NodeId entry : map->Entries(Id("Mode"))) {
        names.emplace_back(map->EntryName(entry));
        values.push_back(map->EntryValue(entry));
    }

    EXPECT_THAT(names, ::testing::ElementsAre("Off", "Once", "Always", "Never"));
    EXPECT_THAT(values, ::testing::ElementsAre(0, 1, 16, 3));
}

TEST_F(EnumerationNodeTest, NamesTheEntryInForce)
{
    port.Put(0, {16});

    EXPECT_EQ(ValueOf(Text("Mode")), "Always");
    EXPECT_EQ(ValueOf(Integer("Mode")), 16);
}

TEST_F(EnumerationNodeTest, ReadsAnUnknownNumberAsANumberOnly)
{
    port.Put(0, {99});

    EXPECT_EQ(CodeOf(Text("Mode")), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(Text("Mode")), "Mode: the camera's number 99 belongs to no entry");
    EXPECT_EQ(ValueOf(Integer("Mode")), 99);
}

TEST_F(EnumerationNodeTest, IsSetByNameAndByNumber)
{
    ASSERT_TRUE(map->SetEntry(Id("Mode"), "Always").IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{16}));
    ASSERT_TRUE(SetText("Mode", " Off ").IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{0}));
    ASSERT_TRUE(SetText("Mode", "0x10").IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{16}));
    ASSERT_TRUE(SetInteger("Mode", 1).IsOK());
    EXPECT_EQ(port.Get(0, 1), (std::vector{1}));
}

TEST_F(EnumerationNodeTest, NamesTheKnownEntriesWhenOneIsUnknown)
{
    const auto result = map->SetEntry(Id("Mode"), "Sometimes");

    EXPECT_EQ(CodeOf(result), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(result),
              "Mode: there is no entry \"Sometimes\"; there are Off, Once, Always, Never");
    EXPECT_EQ(CodeOf(SetInteger("Mode", 2)), VxError::OutOfRange);
    EXPECT_EQ(port.writes, 0);
}

TEST_F(EnumerationNodeTest, RefusesEntriesThatAreNotAvailable)
{
    ASSERT_TRUE(SetInteger("HasOnce", 0).IsOK());

    EXPECT_EQ(CodeOf(map->SetEntry(Id("Mode"), "Once")), VxError::NotAvailable);
    EXPECT_EQ(CodeOf(SetInteger("Mode", 1)), VxError::NotAvailable);
    EXPECT_EQ(CodeOf(map->SetEntry(Id("Mode"), "Never")), VxError::NotAvailable);
    EXPECT_FALSE(IsAvailable(map->Access(map->Entries(Id("Mode"))[1])));
    EXPECT_TRUE(IsAvailable(map->Access(map->Entries(Id("Mode"))[0])));
}

TEST_F(EnumerationNodeTest, PrefersTheAvailableOneOfEntriesThatShareANumber)
{
    Load("<Enumeration Name=\"F\"><EnumEntry "
         "Name=\"Old\"><Value>1</Value><pIsImplemented>No</pIsImplemented></EnumEntry>"
         "<EnumEntry Name=\"New\"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>"
         "<Integer Name=\"No\"><Value>0</Value></Integer>");

    EXPECT_TRUE(SetInteger("F", 1).IsOK());
}

TEST_F(EnumerationNodeTest, KeepsAVariable)
{
    Load("<Enumeration Name=\"Sel\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry>"
         "<EnumEntry Name=\"B\"><Value>2</Value></EnumEntry><Value>2</Value></Enumeration>");

    EXPECT_EQ(ValueOf(Text("Sel")), "B");
    ASSERT_TRUE(SetText("Sel", "A").IsOK());
    EXPECT_EQ(ValueOf(Integer("Sel")), 1);
}

TEST_F(EnumerationNodeTest, ReadsASelfClearingEntryAgain)
{
    Load("<Enumeration Name=\"Auto\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><EnumEntry "
         "Name=\"Once\">"
         "<Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry><pValue>Reg</pValue></Enumeration>"
         "<IntReg Name=\"Reg\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>");

    ASSERT_TRUE(SetText("Auto", "Once").IsOK());
    port.Put(0, {0}); // the camera is through with it

    EXPECT_EQ(ValueOf(Text("Auto")), "Off");
}

TEST_F(EnumerationNodeTest, LeavesOutEntriesWithoutAValue)
{
    Load("<Enumeration Name=\"E\"><EnumEntry Name=\"A\"/><EnumEntry Name=\"B\"><Value>2</Value></EnumEntry>"
         "<Value>2</Value></Enumeration>");

    EXPECT_EQ(CodeOf(map->SetEntry(Id("E"), "A")), VxError::NotAvailable);
    EXPECT_TRUE(map->SetEntry(Id("E"), "B").IsOK());
}

TEST_F(EnumerationNodeTest, TakesEntriesThatStandOutside)
{
    Load("<EnumEntry Name=\"On\"><Value>1</Value></EnumEntry>"
         "<Enumeration "
         "Name=\"E\"><pEnumEntry>On</pEnumEntry><pEnumEntry>Gone</pEnumEntry><Value>1</Value></Enumeration>");

    EXPECT_EQ(ValueOf(Text("E")), "On");
    EXPECT_EQ(map->Entries(Id("E")).size(), 1u);
}

TEST_F(EnumerationNodeTest, IsNoOtherKind)
{
    EXPECT_EQ(CodeOf(map->SetEntry(Id("HasOnce"), "Off")), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(map->GetEntry(Id("HasOnce"))), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(map->GetBoolean(Id("Mode"))), VxError::TypeMismatch);
    EXPECT_TRUE(map->Entries(Id("HasOnce")).empty());
}

TEST_F(EnumerationNodeTest, StandsForTheFloatsOfItsEntries)
{
    Load(
        "<Enumeration Name=\"Mode\"><EnumEntry Name=\"Half\"><Value>1</Value><NumericValue>0.5</NumericValue>"
        "</EnumEntry><EnumEntry Name=\"Two\"><Value>2</Value></EnumEntry><Value>1</Value></Enumeration>"
        "<Float Name=\"F\"><pValue>Mode</pValue></Float>");

    EXPECT_EQ(ValueOf(Float("Mode")), 0.5);
    EXPECT_EQ(ValueOf(Integer("Mode")), 1);
    EXPECT_EQ(ValueOf(Float("F")), 0.5);

    ASSERT_TRUE(map->SetFloat(Id("Mode"), 2.0).IsOK());
    EXPECT_EQ(ValueOf(Text("Mode")), "Two");
    ASSERT_TRUE(map->SetFloat(Id("Mode"), 0.5).IsOK());
    EXPECT_EQ(ValueOf(Text("Mode")), "Half");
    EXPECT_EQ(CodeOf(map->SetFloat(Id("Mode"), 7.0)), VxError::OutOfRange);
}

TEST_F(EnumerationNodeTest, IsNotAvailableWhereNoEntryIs)
{
    Load("<Enumeration Name=\"Mode\"><EnumEntry Name=\"A\"><Value>1</Value><pIsAvailable>Zero</pIsAvailable>"
         "</EnumEntry><EnumEntry Name=\"B\"><Value>2</Value><pIsImplemented>Zero</pIsImplemented></EnumEntry>"
         "<Value>1</Value></Enumeration><Integer Name=\"Zero\"><Value>0</Value></Integer>");
    EXPECT_EQ(Access("Mode"), AccessMode::NotAvailable);

    ASSERT_TRUE(SetInteger("Zero", 1).IsOK());
    EXPECT_EQ(Access("Mode"), AccessMode::ReadWrite);
}

TEST_F(EnumerationNodeTest, LimitsToTheNumbersOfItsEntries)
{
    const auto limits = ValueOf(map->GetIntegerLimits(Id("Mode")));

    EXPECT_EQ(limits.minimum, 0);
    EXPECT_EQ(limits.maximum, 16);
    EXPECT_EQ(limits.increment, 1);
}

} // namespace
} // namespace genapi
