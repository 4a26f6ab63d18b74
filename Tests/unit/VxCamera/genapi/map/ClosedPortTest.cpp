#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/NodeMapFixture.h"

#include <array>
#include <functional>
#include <span>
#include <utility>
#include <vector>

// A camera that is gone: no feature can be used any more, whether its value is known or not.

namespace genapi {
namespace {

class ClosedPortTest : public NodeMapFixture {
protected:
    void SetUp() override
    {
        Load("<Category Name=\"Root\"><pFeature>Number</pFeature></Category>"
             "<Integer Name=\"Number\"><pValue>Register</pValue></Integer>"
             "<IntReg "
             "Name=\"Register\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode></IntReg>"
             "<Integer Name=\"Fixed\"><Value>7</Value></Integer>"
             "<Float Name=\"Float\"><Value>1.5</Value></Float>"
             "<Boolean Name=\"Switch\"><Value>true</Value></Boolean>"
             "<Enumeration Name=\"Choice\"><EnumEntry "
             "Name=\"One\"><Value>1</Value></EnumEntry><Value>1</Value>"
             "</Enumeration>"
             "<Command Name=\"Go\"><pValue>Fixed</pValue><CommandValue>1</CommandValue></Command>"
             "<String Name=\"Text\"><Value>here</Value></String>"
             "<Register "
             "Name=\"Bytes\"><Address>8</Address><Length>2</Length><AccessMode>RW</AccessMode></Register>"
             "<SwissKnife Name=\"Knife\"><Formula>2 * 3</Formula></SwissKnife>");
    }

    void Close() { port.closed = VxResult(VxError::LinkLost, "camera 1.2.3.4 has stopped answering"); }
};

TEST_F(ClosedPortTest, EveryOperationFailsWithTheReasonWithoutAskingTheCamera)
{
    const std::array bytes{std::byte{1}, std::byte{2}};
    const std::vector<std::pair<const char*, std::function<VxResult()>>> operations{
        {"Number", [&] { return Integer("Number").Result(); }},
        {"Number", [&] { return SetInteger("Number", 1); }},
        {"Number", [&] { return map->GetIntegerLimits(Id("Number")).Result(); }},
        {"Number", [&] { return Float("Number").Result(); }},
        {"Fixed", [&] { return Integer("Fixed").Result(); }},
        {"Fixed", [&] { return SetInteger("Fixed", 8); }},
        {"Float", [&] { return Float("Float").Result(); }},
        {"Float", [&] { return map->SetFloat(Id("Float"), 2); }},
        {"Float", [&] { return map->GetFloatLimits(Id("Float")).Result(); }},
        {"Switch", [&] { return map->GetBoolean(Id("Switch")).Result(); }},
        {"Switch", [&] { return map->SetBoolean(Id("Switch"), false); }},
        {"Choice", [&] { return map->GetEntry(Id("Choice")).Result(); }},
        {"Choice", [&] { return map->SetEntry(Id("Choice"), "One"); }},
        {"Go", [&] { return map->Execute(Id("Go")); }},
        {"Go", [&] { return map->IsDone(Id("Go")).Result(); }},
        {"Text", [&] { return map->GetString(Id("Text")).Result(); }},
        {"Text", [&] { return map->SetString(Id("Text"), "there"); }},
        {"Bytes", [&] { return map->GetBytes(Id("Bytes")).Result(); }},
        {"Bytes", [&] { return map->SetBytes(Id("Bytes"), bytes); }},
        {"Knife", [&] { return Float("Knife").Result(); }},
    };
    for (const auto& [name, operation] : operations)
        ASSERT_TRUE(operation().IsOK()) << name; // else it would fail in any case
    const int accesses = port.reads + port.writes;

    Close();

    for (const auto& [name, operation] : operations) {
        EXPECT_EQ(operation().Code(), VxError::LinkLost) << name;
        EXPECT_EQ(SentenceOf(operation()), std::string(name) + ": camera 1.2.3.4 has stopped answering");
    }
    EXPECT_EQ(port.reads + port.writes, accesses);
}

TEST_F(ClosedPortTest, NoFeatureHasATextOrTakesOneWhateverItIs)
{
    Close();

    for (const char* name :
         {"Root", "Number", "Fixed", "Float", "Switch", "Choice", "Go", "Text", "Bytes", "Knife", "Device"}) {
        EXPECT_EQ(CodeOf(Text(name)), VxError::LinkLost) << name;
        EXPECT_EQ(CodeOf(SetText(name, "1")), VxError::LinkLost) << name;
        EXPECT_EQ(CodeOf(SetText(name, "no value of any type")), VxError::LinkLost) << name;
    }
}

TEST_F(ClosedPortTest, NothingIsAvailableAndTheDescriptionStays)
{
    ASSERT_EQ(Access("Number"), AccessMode::ReadWrite);

    Close();

    for (const char* name : {"Number", "Fixed", "Choice", "Go", "Knife"})
        EXPECT_EQ(Access(name), AccessMode::NotAvailable) << name;
    EXPECT_EQ(map->Access(map->Entries(Id("Choice")).front()), AccessMode::NotAvailable);
    EXPECT_EQ(map->CloseReason().Code(), VxError::LinkLost);
    EXPECT_EQ(map->Features().size(), 1u);
    EXPECT_EQ(map->Info(Id("Number")).type, ValueType::Integer);
    EXPECT_EQ(map->EntryName(map->Entries(Id("Choice")).front()), "One");
}

} // namespace
} // namespace genapi
