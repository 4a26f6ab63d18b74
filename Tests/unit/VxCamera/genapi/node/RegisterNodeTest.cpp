#include "VxCamera/genapi/node/RegisterNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class RegisterNodeTest : public NodeMapFixture {};

TEST_F(RegisterNodeTest, AddsUpEveryPartOfItsAddress)
{
    Load("<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>Base</pAddress><pIndex "
         "Offset=\"0x40\">Index</pIndex>"
         "<IntSwissKnife Name=\"K\"><Formula>4*2</Formula></IntSwissKnife><Address>0x100000</Address>"
         "<Length>1</Length></IntReg>"
         "<Integer Name=\"Base\"><Value>0x200</Value></Integer><Integer "
         "Name=\"Index\"><Value>3</Value></Integer>");
    port.Put(0x1000 + 0x200 + 3 * 0x40 + 8 + 0x100000, {77});

    EXPECT_EQ(ValueOf(Integer("R")), 77);
}

TEST_F(RegisterNodeTest, MultipliesAnIndexWithoutOffsetByItsLength)
{
    Load("<IntReg Name=\"R\"><Address>0x100</Address><pIndex>Index</pIndex><Length>4</Length>"
         "<Endianess>BigEndian</Endianess></IntReg><Integer Name=\"Index\"><Value>2</Value></Integer>");
    port.PutBe32(0x108, 5);

    EXPECT_EQ(ValueOf(Integer("R")), 5);
}

TEST_F(RegisterNodeTest, MultipliesAnIndexByAnotherNode)
{
    Load("<IntReg Name=\"R\"><Address>0x100</Address><pIndex "
         "pOffset=\"Step\">Index</pIndex><Length>1</Length></IntReg>"
         "<Integer Name=\"Index\"><Value>2</Value></Integer><Integer "
         "Name=\"Step\"><Value>0x20</Value></Integer>");
    port.Put(0x140, {9});

    EXPECT_EQ(ValueOf(Integer("R")), 9);
}

TEST_F(RegisterNodeTest, TakesAnEnumerationForAnIndex)
{
    Load("<IntReg Name=\"R\"><pIndex Offset=\"16\">Sel</pIndex><Length>1</Length></IntReg>"
         "<Enumeration Name=\"Sel\"><EnumEntry "
         "Name=\"Two\"><Value>2</Value></EnumEntry><Value>2</Value></Enumeration>");
    port.Put(32, {4});

    EXPECT_EQ(ValueOf(Integer("R")), 4);
}

TEST_F(RegisterNodeTest, TakesItsLengthFromANode)
{
    Load("<Register Name=\"R\"><Address>8</Address><pLength>L</pLength><AccessMode>RW</AccessMode></Register>"
         "<Integer Name=\"L\"><Value>3</Value></Integer>");
    port.Put(8, {1, 2, 3, 4});

    EXPECT_EQ(ValueOf(Text("R")), "010203");
    EXPECT_EQ(CodeOf(map->SetBytes(Id("R"), std::vector<std::byte>(4))), VxError::InvalidParameter);
    EXPECT_EQ(CodeOf(SetText("R", "0a0b0c")), VxError::Ok);
    EXPECT_EQ(port.Get(8, 4), (std::vector{10, 11, 12, 4}));
}

TEST_F(RegisterNodeTest, RefusesAbsurdLengths)
{
    Load("<Register Name=\"Zero\"><Address>8</Address><Length>0</Length></Register>"
         "<Register Name=\"Huge\"><Address>8</Address><Length>0x7FFFFFFFFFFFFFFF</Length></Register>"
         "<Register Name=\"None\"><Address>8</Address></Register>"
         "<Register Name=\"Computed\"><Address>8</Address><pLength>L</pLength></Register>"
         "<Integer Name=\"L\"><Value>-1</Value></Integer>");

    for (const char* name : {"Zero", "Huge", "None"})
        EXPECT_EQ(Access(name), AccessMode::NotImplemented) << name;
    EXPECT_EQ(CodeOf(Text("Computed")), VxError::InvalidData);
    EXPECT_EQ(port.reads, 0);
}

TEST_F(RegisterNodeTest, RefusesAddressesBeyond64Bits)
{
    Load("<Register Name=\"Last\"><Address>0xFFFFFFFFFFFFFFFC</Address><Length>4</Length></Register>"
         "<Register Name=\"Over\"><Address>0xFFFFFFFFFFFFFFFD</Address><Length>4</Length></Register>"
         "<Register Name=\"Sum\"><Address>0xFFFFFFFFFFFFFFFF</Address><Address>0xFFFFFFFFFFFFFFFF</Address>"
         "<Length>4</Length></Register>"
         "<Register Name=\"Product\"><pIndex pOffset=\"Big\">Big</pIndex><pIndex pOffset=\"Big\">Big</pIndex>"
         "<pIndex pOffset=\"Big\">Big</pIndex><Length>4</Length></Register>"
         "<Register Name=\"Negative\"><Address>-4</Address><Length>4</Length></Register>"
         "<Integer Name=\"Big\"><Value>0x8000000000000000</Value></Integer>");

    EXPECT_TRUE(Text("Last"));
    for (const char* name : {"Over", "Sum", "Product", "Negative"})
        EXPECT_FALSE(Text(name)) << name;
}

TEST_F(RegisterNodeTest, NamesRegisterAndAddressWhenThePortFails)
{
    Load("<Integer Name=\"Width\"><pValue>WidthReg</pValue></Integer>"
         "<IntReg "
         "Name=\"WidthReg\"><Address>0x1234</Address><Length>4</Length><AccessMode>RW</AccessMode></IntReg>");
    port.failure = VxResult(VxError::Timeout, "127.0.0.1 does not answer");

    const auto read = Integer("Width");
    const auto written = SetInteger("Width", 3);

    EXPECT_EQ(CodeOf(read), VxError::Timeout);
    EXPECT_EQ(SentenceOf(read),
              "Width: WidthReg: 4 bytes at 0x1234 could not be read: 127.0.0.1 does not answer");
    EXPECT_EQ(CodeOf(written), VxError::Timeout);
    EXPECT_EQ(SentenceOf(written),
              "Width: WidthReg: 4 bytes at 0x1234 could not be written: 127.0.0.1 does not answer");
}

class CachingTest : public NodeMapFixture {
protected:
    void LoadWith(std::string_view elements)
    {
        Load("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
             "<Endianess>BigEndian</Endianess>" +
             std::string(elements) + "</IntReg>");
    }
};

TEST_F(CachingTest, ReadsOnceByDefault)
{
    LoadWith("");

    std::ignore = Integer("R");
    std::ignore = Integer("R");

    EXPECT_EQ(port.reads, 1);
}

TEST_F(CachingTest, KeepsAWrittenValueWhenWritingThrough)
{
    LoadWith("<Cachable>WriteThrough</Cachable>");

    ASSERT_TRUE(SetInteger("R", 7).IsOK());

    EXPECT_EQ(ValueOf(Integer("R")), 7);
    EXPECT_EQ(port.reads, 0);
}

TEST_F(CachingTest, ReadsAWrittenValueAgainWhenWritingAround)
{
    LoadWith("<Cachable>WriteAround</Cachable>");
    ASSERT_TRUE(SetInteger("R", 7).IsOK());
    port.PutBe32(0, 8); // the camera rounds

    EXPECT_EQ(ValueOf(Integer("R")), 8);
    EXPECT_EQ(ValueOf(Integer("R")), 8);
    EXPECT_EQ(port.reads, 1);
}

TEST_F(CachingTest, ReadsEachTimeWithoutCache)
{
    LoadWith("<Cachable>NoCache</Cachable>");

    std::ignore = Integer("R");
    std::ignore = Integer("R");

    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, ForgetsAValueWhenItsAddressChanges)
{
    Load("<IntReg Name=\"R\"><pAddress>At</pAddress><Length>1</Length></IntReg>"
         "<Integer Name=\"At\"><Value>0</Value></Integer>");
    port.Put(0, {1, 2});
    ASSERT_EQ(ValueOf(Integer("R")), 1);

    ASSERT_TRUE(SetInteger("At", 1).IsOK());

    EXPECT_EQ(ValueOf(Integer("R")), 2);
}

TEST_F(CachingTest, ForgetsAValueWhoseWriteFailed)
{
    LoadWith("");
    ASSERT_EQ(ValueOf(Integer("R")), 0);
    port.failure = VxResult(VxError::Timeout, "lost");
    ASSERT_FALSE(SetInteger("R", 7).IsOK());
    port.failure.reset();
    port.PutBe32(0, 7); // it had arrived after all

    EXPECT_EQ(ValueOf(Integer("R")), 7);
}

TEST_F(CachingTest, ForgetsEverythingOnDemand)
{
    LoadWith("");
    std::ignore = Integer("R");

    map->InvalidateAll();
    std::ignore = Integer("R");

    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, NeverKeepsAPolledValueWithoutAClock)
{
    map = *NodeMap::Load(Describe("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length>"
                                  "<PollingTime>1000</PollingTime></IntReg>"),
                         port);

    std::ignore = Integer("R");
    std::ignore = Integer("R");

    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, KeepsAPolledValueForItsPollingTime)
{
    using namespace std::chrono_literals;
    LoadWith("<PollingTime>1000</PollingTime>");
    std::ignore = Integer("R");

    clock.Advance(999ms);
    std::ignore = Integer("R");
    EXPECT_EQ(port.reads, 1);

    clock.Advance(1ms);
    std::ignore = Integer("R");
    EXPECT_EQ(port.reads, 2);

    clock.Advance(999ms);
    std::ignore = Integer("R");
    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, KeepsAWrittenValueForItsPollingTime)
{
    using namespace std::chrono_literals;
    LoadWith("<PollingTime>1000</PollingTime>");
    ASSERT_TRUE(SetInteger("R", 5).IsOK());

    clock.Advance(999ms);
    EXPECT_EQ(ValueOf(Integer("R")), 5);
    EXPECT_EQ(port.reads, 0);

    clock.Advance(1ms);
    EXPECT_EQ(ValueOf(Integer("R")), 5);
    EXPECT_EQ(port.reads, 1);
}

TEST_F(CachingTest, KeepsAValueForEverWithoutAPollingTime)
{
    LoadWith("");
    std::ignore = Integer("R");

    clock.Advance(std::chrono::hours(1000));
    std::ignore = Integer("R");

    EXPECT_EQ(port.reads, 1);
}

TEST_F(CachingTest, DoesNotPollWhileSomethingBlocksIt)
{
    using namespace std::chrono_literals;
    Load("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><PollingTime>1000</PollingTime>"
         "<pBlockPolling>Block</pBlockPolling></IntReg><Integer Name=\"Block\"><Value>1</Value></Integer>");
    std::ignore = Integer("R");

    clock.Advance(5000ms);
    std::ignore = Integer("R");
    EXPECT_EQ(port.reads, 1);

    ASSERT_TRUE(SetInteger("Block", 0).IsOK());
    std::ignore = Integer("R");
    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, TakesTheShortestOfSeveralPollingTimes)
{
    using namespace std::chrono_literals;
    Load("<Integer Name=\"Slow\"><pValue>R</pValue><PollingTime>5000</PollingTime></Integer>"
         "<Integer Name=\"Fast\"><pValue>R</pValue><PollingTime>500</PollingTime></Integer>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><PollingTime>1000</PollingTime></IntReg>");
    std::ignore = Integer("Slow");

    clock.Advance(500ms);
    std::ignore = Integer("Slow");

    EXPECT_EQ(port.reads, 2);
    EXPECT_EQ(map->PollingMs(Id("Fast")), 500u);
}

TEST_F(CachingTest, TakesThePollingTimeOfTheFeatureAbove)
{
    using namespace std::chrono_literals;
    Load("<Integer Name=\"F\"><pValue>R</pValue><PollingTime>500</PollingTime></Integer>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length></IntReg>");
    std::ignore = Integer("F");

    clock.Advance(499ms);
    std::ignore = Integer("F");
    EXPECT_EQ(port.reads, 1);

    clock.Advance(1ms);
    std::ignore = Integer("F");
    EXPECT_EQ(port.reads, 2);
}

TEST_F(CachingTest, ForgetsOtherViewsOfWrittenBytes)
{
    Load("<MaskedIntReg Name=\"Low\"><Address>4</Address><Length>4</Length><LSB>0</LSB><MSB>15</MSB>"
         "<AccessMode>RW</AccessMode></MaskedIntReg>"
         "<IntReg Name=\"Whole\"><Address>4</Address><Length>4</Length></IntReg>"
         "<Register Name=\"Block\"><Address>0</Address><Length>16</Length></Register>"
         "<IntReg Name=\"Next\"><Address>8</Address><Length>4</Length></IntReg>");
    for (const char* name : {"Whole", "Block", "Next"})
        std::ignore = Text(name);

    ASSERT_TRUE(SetInteger("Low", 0x1234).IsOK());
    const int before = port.reads;

    EXPECT_EQ(ValueOf(Integer("Whole")), 0x1234);
    EXPECT_EQ(ValueOf(Text("Block")).substr(8, 4), "3412");
    EXPECT_EQ(port.reads, before + 2);
    std::ignore = Integer("Next");
    EXPECT_EQ(port.reads, before + 2);
}

} // namespace
} // namespace genapi
