#include "VxCamera/genapi/node/IntRegNode.h"

#include "support/genapi/NodeMapFixture.h"

namespace genapi {
namespace {

class IntRegNodeTest : public NodeMapFixture {
protected:
    IntRegNodeTest() { port.Put(0, {0x12, 0x34, 0x56, 0x78}); }

    /// One register "R" at address 0 that can be read and written.
    void LoadRegister(std::string_view kind, std::string_view elements,
                      RegisterOrder order = RegisterOrder::AsDescribed)
    {
        const std::string tag(kind);
        Load("<" + tag + " Name=\"R\"><Address>0</Address><AccessMode>RW</AccessMode>" +
                 std::string(elements) + "</" + tag + ">",
             order);
    }
};

TEST_F(IntRegNodeTest, ReadsBothByteOrders)
{
    LoadRegister("IntReg", "<Length>4</Length><Endianess>BigEndian</Endianess>");
    EXPECT_EQ(ValueOf(Integer("R")), 0x12345678);

    LoadRegister("IntReg", "<Length>4</Length><Endianess>LittleEndian</Endianess>");
    EXPECT_EQ(ValueOf(Integer("R")), 0x78563412);
}

TEST_F(IntRegNodeTest, ReadsLengthsOneToEight)
{
    port.Put(0, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    std::int64_t expected = 0;
    for (int length = 1; length <= 8; ++length) {
        expected = expected * 256 + length;
        LoadRegister("IntReg",
                     "<Length>" + std::to_string(length) + "</Length><Endianess>BigEndian</Endianess>");
        EXPECT_EQ(ValueOf(Integer("R")), expected) << length;
    }
}

TEST_F(IntRegNodeTest, ExtendsTheSign)
{
    port.Put(0, {0xFE, 0xFF});
    LoadRegister("IntReg", "<Length>2</Length><Sign>Signed</Sign>");

    EXPECT_EQ(ValueOf(Integer("R")), -2);
}

TEST_F(IntRegNodeTest, KeepsBit63OfAnUnsignedRegister)
{
    port.Put(0, {0x80, 0, 0, 0, 0, 0, 0, 1});
    LoadRegister("IntReg", "<Length>8</Length><Endianess>BigEndian</Endianess>");

    EXPECT_EQ(ValueOf(Integer("R")), INT64_MIN + 1);
    EXPECT_EQ(ValueOf(map->GetIntegerLimits(Id("R"))).maximum, INT64_MAX);
}

TEST_F(IntRegNodeTest, ReadsBitsOfBigEndianRegisters)
{
    LoadRegister("MaskedIntReg",
                 "<Length>4</Length><LSB>31</LSB><MSB>24</MSB><Endianess>BigEndian</Endianess>");
    EXPECT_EQ(ValueOf(Integer("R")), 0x78);

    LoadRegister("MaskedIntReg", "<Length>4</Length><Bit>3</Bit><Endianess>BigEndian</Endianess>");
    EXPECT_EQ(ValueOf(Integer("R")), 1);
}

TEST_F(IntRegNodeTest, ReadsBitsOfLittleEndianRegisters)
{
    LoadRegister("MaskedIntReg", "<Length>4</Length><LSB>8</LSB><MSB>15</MSB>");
    EXPECT_EQ(ValueOf(Integer("R")), 0x34);
}

TEST_F(IntRegNodeTest, TakesAllBitsWhereNoneAreNamed)
{
    LoadRegister("MaskedIntReg", "<Length>2</Length><Endianess>BigEndian</Endianess>");

    EXPECT_EQ(ValueOf(Integer("R")), 0x1234);
}

TEST_F(IntRegNodeTest, WritesBitsBetweenThoseTheCameraHasNow)
{
    LoadRegister("MaskedIntReg", "<Length>4</Length><LSB>8</LSB><MSB>15</MSB>");
    std::ignore = Integer("R");
    port.Put(3, {0x79}); // another bit changes by itself

    ASSERT_TRUE(SetInteger("R", 0xAB).IsOK());

    EXPECT_EQ(port.Get(0, 4), (std::vector{0x12, 0xAB, 0x56, 0x79}));
}

TEST_F(IntRegNodeTest, WritesZerosAroundTheBitsOfARegisterThatCannotBeRead)
{
    LoadRegister("MaskedIntReg", "<Length>4</Length><LSB>8</LSB><MSB>15</MSB><AccessMode>WO</AccessMode>");

    ASSERT_TRUE(SetInteger("R", 0xAB).IsOK());

    EXPECT_EQ(port.Get(0, 4), (std::vector{0, 0xAB, 0, 0}));
    EXPECT_EQ(port.reads, 0);
}

TEST_F(IntRegNodeTest, WritesAWholeRegisterWithoutReadingIt)
{
    LoadRegister("IntReg", "<Length>4</Length><Endianess>BigEndian</Endianess>");

    ASSERT_TRUE(SetInteger("R", 0x01020304).IsOK());

    EXPECT_EQ(port.Get(0, 4), (std::vector{1, 2, 3, 4}));
    EXPECT_EQ(port.reads, 0);
}

TEST_F(IntRegNodeTest, RefusesValuesThatDoNotFit)
{
    LoadRegister("MaskedIntReg", "<Length>4</Length><LSB>0</LSB><MSB>3</MSB>");

    const auto result = SetInteger("R", 16);

    EXPECT_EQ(CodeOf(result), VxError::OutOfRange);
    EXPECT_EQ(SentenceOf(result), "R: 16 is out of range; it must be from 0 to 15");
    EXPECT_EQ(CodeOf(SetInteger("R", -1)), VxError::OutOfRange);
    EXPECT_EQ(port.writes, 0);
}

TEST_F(IntRegNodeTest, KnowsTheLimitsOfSignedBits)
{
    LoadRegister("MaskedIntReg", "<Length>4</Length><LSB>0</LSB><MSB>3</MSB><Sign>Signed</Sign>");

    const auto limits = ValueOf(map->GetIntegerLimits(Id("R")));

    EXPECT_EQ(limits.minimum, -8);
    EXPECT_EQ(limits.maximum, 7);
    EXPECT_EQ(limits.increment, 1);
}

TEST_F(IntRegNodeTest, IsNotImplementedWithBitsOutsideOfTheRegister)
{
    for (const char* elements :
         {"<Length>2</Length><Bit>16</Bit>", "<Length>4</Length><LSB>-1</LSB><MSB>3</MSB>",
          "<Length>9</Length>", "<Length>1</Length><Bit>0x7FFFFFFFFFFFFFFF</Bit>"}) {
        LoadRegister("MaskedIntReg", elements);
        EXPECT_EQ(Access("R"), AccessMode::NotImplemented) << elements;
        EXPECT_EQ(map->Notices().size(), 1u);
    }
}

TEST_F(IntRegNodeTest, LetsEntriesOfAStructureKeepEachOthersBits)
{
    Load("<StructReg Comment=\"s\"><Address>0</Address><Length>4</Length><Endianess>BigEndian</Endianess>"
         "<AccessMode>RW</AccessMode>"
         "<StructEntry Name=\"A\"><LSB>31</LSB><MSB>24</MSB></StructEntry>"
         "<StructEntry Name=\"B\"><LSB>23</LSB><MSB>16</MSB></StructEntry>"
         "<StructEntry Name=\"C\"><Bit>0</Bit><AccessMode>RO</AccessMode></StructEntry></StructReg>");
    ASSERT_EQ(ValueOf(Integer("A")), 0x78);

    ASSERT_TRUE(SetInteger("B", 0xFF).IsOK());
    ASSERT_TRUE(SetInteger("A", 0x01).IsOK());

    EXPECT_EQ(port.Get(0, 4), (std::vector{0x12, 0x34, 0xFF, 0x01}));
    EXPECT_EQ(Access("C"), AccessMode::ReadOnly);
    EXPECT_EQ(CodeOf(SetInteger("C", 1)), VxError::NotWritable);
}

TEST_F(IntRegNodeTest, ReadsOldRegistersBigEndianWhereTheLinkAsksForIt)
{
    const std::string old = "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\">"
                            "<IntReg Name=\"Four\"><Address>0</Address><Length>4</Length></IntReg>"
                            "<IntReg Name=\"Two\"><Address>0</Address><Length>2</Length></IntReg>"
                            "</RegisterDescription>";
    map = *NodeMap::Load(old, port, RegisterOrder::BigEndianBelowSchema11);
    EXPECT_EQ(ValueOf(Integer("Four")), 0x12345678);
    EXPECT_EQ(ValueOf(Integer("Two")), 0x3412);

    map = *NodeMap::Load(old, port);
    EXPECT_EQ(ValueOf(Integer("Four")), 0x78563412);

    LoadRegister("IntReg", "<Length>4</Length>", RegisterOrder::BigEndianBelowSchema11);
    EXPECT_EQ(ValueOf(Integer("R")), 0x78563412); // schema 1.1
}

TEST_F(IntRegNodeTest, SwapsBytesBehindAPortThatAsksForIt)
{
    Load("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><pPort>Swapped</pPort></IntReg>"
         "<Port Name=\"Swapped\"><SwapEndianess>Yes</SwapEndianess></Port>");

    EXPECT_EQ(ValueOf(Integer("R")), 0x12345678);
}

TEST_F(IntRegNodeTest, FollowsTheUserWhoKnowsTheOrderBetterThanTheDescription)
{
    Load("<IntReg Name=\"Long\"><Address>0</Address><Length>4</Length></IntReg>"
         "<IntReg Name=\"Short\"><Address>0</Address><Length>2</Length></IntReg>",
         RegisterOrder::BigEndianBelowSchema11); // schema 1.1
    port.Put(0, {1, 2, 3, 4});
    EXPECT_EQ(ValueOf(Integer("Long")), 0x04030201);

    map->SetRegisterOrder(RegisterOrder::BigEndian);

    EXPECT_EQ(map->Order(), RegisterOrder::BigEndian);
    EXPECT_EQ(ValueOf(Integer("Long")), 0x01020304);
    EXPECT_EQ(ValueOf(Integer("Short")), 0x0201);
    map->SetRegisterOrder(RegisterOrder::AsDescribed);
    EXPECT_EQ(ValueOf(Integer("Long")), 0x04030201);
}

TEST_F(IntRegNodeTest, IsReadEachTimeWithoutCaching)
{
    Load("<IntReg Name=\"R\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode>"
         "<Cachable>WriteThrough</Cachable></IntReg>");
    port.Put(0, {1});
    EXPECT_EQ(ValueOf(Integer("R")), 1);
    port.Put(0, {2});
    EXPECT_EQ(ValueOf(Integer("R")), 1);

    map->SetCaching(false);

    EXPECT_FALSE(map->IsCaching());
    EXPECT_EQ(ValueOf(Integer("R")), 2);
    port.Put(0, {3});
    EXPECT_EQ(ValueOf(Integer("R")), 3);
    EXPECT_TRUE(SetInteger("R", 7).IsOK());
    port.Put(0, {4});
    EXPECT_EQ(ValueOf(Integer("R")), 4);
    map->SetCaching(true);
    EXPECT_EQ(ValueOf(Integer("R")), 4);
    port.Put(0, {5});
    EXPECT_EQ(ValueOf(Integer("R")), 4);
}

} // namespace
} // namespace genapi
