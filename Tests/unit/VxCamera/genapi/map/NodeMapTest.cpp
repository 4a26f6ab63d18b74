#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class NodeMapTest : public NodeMapFixture {};

TEST_F(NodeMapTest, LoadsWithoutTouchingTheCamera)
{
    Load("<Integer Name=\"N\"><pValue>R</pValue><pIsAvailable>R</pIsAvailable></Integer>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length></IntReg>");

    EXPECT_EQ(port.reads, 0);
}

TEST_F(NodeMapTest, SharesADescriptionAmongCameras)
{
    const auto description = *Description::Parse(Describe("<Integer Name=\"N\"><Value>1</Value></Integer>"));
    FakeRegisterPort other;
    const auto first = *NodeMap::Create(description, port);
    const auto second = *NodeMap::Create(description, other);

    ASSERT_TRUE(first->SetInteger(*first->Find("N"), 2).IsOK());

    EXPECT_EQ(ValueOf(first->GetInteger(*first->Find("N"))), 2);
    EXPECT_EQ(ValueOf(second->GetInteger(*second->Find("N"))), 1);
}

TEST_F(NodeMapTest, RefusesANullDescription)
{
    EXPECT_EQ(CodeOf(NodeMap::Create(nullptr, port)), VxError::InvalidParameter);
}

TEST_F(NodeMapTest, OutlivesTheTextItWasLoadedFrom)
{
    {
        std::string xml =
            Describe("<Integer Name=\"Far\"><Value>1</Value><ToolTip>a tip</ToolTip></Integer>");
        map = *NodeMap::Load(xml, port);
        std::fill(xml.begin(), xml.end(), 'x');
    }

    EXPECT_EQ(map->Info(Id("Far")).toolTip, "a tip");
}

TEST_F(NodeMapTest, FindsNodesByExactName)
{
    Load("<Integer Name=\"Gain\"><Value>1</Value></Integer>");

    EXPECT_TRUE(map->Find("Gain"));
    EXPECT_FALSE(map->Find("gain"));
    EXPECT_FALSE(map->Find(""));
    EXPECT_TRUE(map->Find("Device"));
}

TEST_F(NodeMapTest, ReadsAndWritesTextOfEachType)
{
    Load("<Integer Name=\"Address\"><Value>0</Value><Representation>IPV4Address</Representation></Integer>"
         "<Integer Name=\"Mac\"><Value>0</Value><Representation>MACAddress</Representation></Integer>"
         "<Integer Name=\"Hex\"><Value>0</Value><Representation>HexNumber</Representation></Integer>"
         "<Integer Name=\"Plain\"><Value>0</Value></Integer><Float Name=\"Float\"><Value>0</Value></Float>");
    const std::vector<std::array<const char*, 3>> rows{{"Address", "10.1.2.3", "10.1.2.3"},
                                                       {"Address", "0xC0A80001", "192.168.0.1"},
                                                       {"Mac", "0A:0b:0c:0d:0e:0f", "0a:0b:0c:0d:0e:0f"},
                                                       {"Hex", "255", "0xff"},
                                                       {"Plain", "0x10", "16"},
                                                       {"Plain", "-12", "-12"},
                                                       {"Float", "1e3", "1000"},
                                                       {"Float", "0.1", "0.1"}};
    for (const auto& [name, in, out] : rows) {
        ASSERT_TRUE(SetText(name, in).IsOK()) << name << " " << in;
        EXPECT_EQ(ValueOf(Text(name)), out);
    }
}

TEST_F(NodeMapTest, SaysWhatATextShouldHaveBeen)
{
    Load("<Integer Name=\"I\"><Value>0</Value></Integer><Float Name=\"F\"><Value>0</Value></Float>"
         "<Register Name=\"R\"><Address>0</Address><Length>2</Length><AccessMode>RW</AccessMode></Register>");

    EXPECT_EQ(SentenceOf(SetText("I", "ten")),
              "I: \"ten\" is no integer: decimal, hexadecimal after 0x, a.b.c.d or aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(SentenceOf(SetText("F", "1,5")), "F: \"1,5\" is no number");
    EXPECT_EQ(SentenceOf(SetText("R", "xyz")), "R: \"xyz\" is no row of pairs of hexadecimal digits");
    for (const char* name : {"I", "F", "R"})
        EXPECT_EQ(CodeOf(SetText(name, "?")), VxError::InvalidData);
    EXPECT_EQ(CodeOf(SetText("Device", "1")), VxError::TypeMismatch);
    EXPECT_EQ(CodeOf(Text("Device")), VxError::TypeMismatch);
}

TEST_F(NodeMapTest, RefusesFloatsThatAreNoNumberInText)
{
    Load("<Float Name=\"F\"><Value>0</Value></Float>");

    EXPECT_EQ(CodeOf(SetText("F", "nan")), VxError::OutOfRange);
    EXPECT_EQ(CodeOf(SetText("F", "inf")), VxError::OutOfRange);
}

TEST_F(NodeMapTest, LetsOneThreadHoldItForASequence)
{
    Load("<Integer Name=\"I\"><Value>0</Value></Integer>");

    const auto lock = map->Hold();

    EXPECT_TRUE(SetInteger("I", 1).IsOK()); // the same thread gets in
}

} // namespace
} // namespace genapi
