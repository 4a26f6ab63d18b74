#include "VxCamera/genapi/node/PortNode.h"

#include "support/genapi/NodeMapFixture.h"

#include <array>

namespace genapi {
namespace {

class PortNodeTest : public NodeMapFixture {
protected:
    PortNodeTest()
    {
        Load(
            "<Port Name=\"ChunkPort\"><ChunkID>0Aef</ChunkID></Port>"
            "<Port Name=\"NamedPort\"><pChunkID>IdText</pChunkID></Port>"
            "<Port Name=\"EventPort\"><EventID>9001</EventID></Port>"
            "<String Name=\"IdText\"><Value>22</Value></String>"
            "<IntReg Name=\"First\"><Address>0</Address><Length>2</Length><pPort>ChunkPort</pPort>"
            "<Endianess>BigEndian</Endianess><AccessMode>RW</AccessMode></IntReg>"
            "<IntReg Name=\"Last\"><Address>-1</Address><Length>1</Length><pPort>ChunkPort</pPort></IntReg>"
            "<IntReg Name=\"Far\"><Address>3</Address><Length>2</Length><pPort>ChunkPort</pPort></IntReg>"
            "<IntReg Name=\"Before\"><Address>-9</Address><Length>1</Length><pPort>ChunkPort</pPort></IntReg>"
            "<IntReg Name=\"Named\"><Address>0</Address><Length>1</Length><pPort>NamedPort</pPort></IntReg>"
            "<IntReg Name=\"Event\"><Address>0</Address><Length>1</Length><pPort>EventPort</pPort></IntReg>"
            "<IntReg Name=\"Wrong\"><Address>0</Address><Length>1</Length><pPort>IdText</pPort></IntReg>"
            "<IntReg Name=\"Free\"><Address>0</Address><Length>1</Length></IntReg>");
    }

    void Attach(std::uint64_t id, std::initializer_list<int> values)
    {
        std::vector<std::byte> bytes;
        for (const int value : values)
            bytes.push_back(static_cast<std::byte>(value));
        const std::array chunks{Chunk{.id = id, .bytes = bytes}};
        map->AttachChunks(chunks);
    }
};

TEST_F(PortNodeTest, IsNotAvailableBeforeItsChunkCame)
{
    EXPECT_EQ(Access("First"), AccessMode::NotAvailable);
    EXPECT_EQ(CodeOf(Integer("First")), VxError::NotAvailable);
    Attach(0x1234, {1, 2, 3, 4});
    EXPECT_EQ(Access("First"), AccessMode::NotAvailable);
    EXPECT_EQ(port.reads, 0);
}

TEST_F(PortNodeTest, SaysWithWhatAValueWouldCome)
{
    EXPECT_EQ(Integer("First").Error().GetDescription().Narrow(),
              "First: its value comes with the data of an image, and none are attached to the features");
}

TEST_F(PortNodeTest, ReadsFromItsChunk)
{
    Attach(0x0aef, {1, 2, 3, 4});

    EXPECT_EQ(ValueOf(Integer("First")), 0x0102);
    EXPECT_EQ(ValueOf(Integer("Last")), 4);
    EXPECT_EQ(port.reads, 0);
}

TEST_F(PortNodeTest, ReadsTheChunkOfTheNextImage)
{
    Attach(0x0aef, {1, 2, 3, 4});
    std::ignore = Integer("First");

    Attach(0x0aef, {5, 6});

    EXPECT_EQ(ValueOf(Integer("First")), 0x0506);
    EXPECT_EQ(ValueOf(Integer("Last")), 6);
}

TEST_F(PortNodeTest, NeverReadsOutsideOfItsChunk)
{
    Attach(0x0aef, {1, 2, 3, 4});

    EXPECT_EQ(CodeOf(Integer("Far")), VxError::Truncated);
    EXPECT_EQ(CodeOf(Integer("Before")), VxError::Truncated);
}

TEST_F(PortNodeTest, CanOnlyBeReadOverAChunk)
{
    Attach(0x0aef, {1, 2, 3, 4});

    EXPECT_EQ(Access("First"), AccessMode::ReadOnly);
    EXPECT_EQ(CodeOf(SetInteger("First", 1)), VxError::NotWritable);
}

TEST_F(PortNodeTest, TakesItsChunkFromANode)
{
    Attach(0x22, {7});

    EXPECT_EQ(ValueOf(Integer("Named")), 7);
}

TEST_F(PortNodeTest, IsNotAvailableForEventsAsLongAsNoneCame)
{
    EXPECT_EQ(Access("Event"), AccessMode::NotAvailable);
}

TEST_F(PortNodeTest, ReadsTheDataOfTheLastEvent)
{
    const std::array first{std::byte{7}};
    const std::array second{std::byte{9}};

    map->AttachEvent(0x9001, first);
    EXPECT_EQ(ValueOf(Integer("Event")), 7);
    map->AttachEvent(0x9001, second);
    EXPECT_EQ(ValueOf(Integer("Event")), 9);
    map->AttachEvent(0x9002, first);
    EXPECT_EQ(ValueOf(Integer("Event")), 9);
    EXPECT_EQ(CodeOf(Integer("First")), VxError::NotAvailable);
}

TEST_F(PortNodeTest, ReadsAgainWhatChangesWithAnEvent)
{
    Load("<Integer Name=\"F\"><pValue>R</pValue><EventID>9001</EventID></Integer>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>1</Length></IntReg>");
    std::ignore = Integer("F");
    port.Put(0, {5});
    EXPECT_EQ(ValueOf(Integer("F")), 0);

    map->AttachEvent(0x9001, {});

    EXPECT_EQ(ValueOf(Integer("F")), 5);
}

TEST_F(PortNodeTest, IsTheCameraForRegistersThatNameNone)
{
    const char* xml =
        "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">"
        "<Port Name=\"Device\"><SwapEndianess>Yes</SwapEndianess></Port>"
        "<IntReg Name=\"R\"><Address>0</Address><Length>2</Length></IntReg></RegisterDescription>";
    port.Put(0, {1, 2});

    map = *NodeMap::Load(xml, port);

    EXPECT_EQ(ValueOf(Integer("R")), 0x0102); // little-endian, swapped
}

TEST_F(PortNodeTest, KeepsTheByteOrderOfOldRegistersOverChunks)
{
    const char* xml =
        "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\">"
        "<Port Name=\"Device\"/><Port Name=\"Chunk\"><ChunkID>01</ChunkID></Port>"
        "<IntReg Name=\"InChunk\"><Address>0</Address><Length>4</Length><pPort>Chunk</pPort></IntReg>"
        "<IntReg Name=\"InCamera\"><Address>0</Address><Length>4</Length><pPort>Device</pPort></IntReg>"
        "</RegisterDescription>";
    port.Put(0, {1, 2, 3, 4});
    map = *NodeMap::Load(xml, port, RegisterOrder::BigEndianBelowSchema11);

    Attach(1, {1, 2, 3, 4});

    EXPECT_EQ(ValueOf(Integer("InCamera")), 0x01020304);
    EXPECT_EQ(ValueOf(Integer("InChunk")), 0x04030201);
}

TEST_F(PortNodeTest, IsNotImplementedWithAnIdThatIsNone)
{
    Load("<Port Name=\"P\"><EventID>xyz</EventID></Port><Port "
         "Name=\"Q\"><ChunkID>123456789abcdef01</ChunkID></Port>"
         "<IntReg Name=\"R\"><Address>0</Address><Length>1</Length><pPort>Q</pPort></IntReg>"
         "<IntReg Name=\"K\"><pAddress>R</pAddress><Length>1</Length></IntReg>");

    EXPECT_EQ(Access("P"), AccessMode::NotImplemented);
    EXPECT_EQ(Access("Q"), AccessMode::NotImplemented);
    EXPECT_EQ(CodeOf(Integer("K")), VxError::NotSupported); // an address is read without asking for access
    EXPECT_EQ(port.reads, 0);
}

TEST_F(PortNodeTest, LeadsToTheCameraByDefault)
{
    port.Put(0, {8});

    EXPECT_EQ(ValueOf(Integer("Free")), 8);
}

TEST_F(PortNodeTest, HasToBeAPort)
{
    EXPECT_EQ(Access("Wrong"), AccessMode::NotImplemented);
    EXPECT_NE(SentenceOf(Integer("Wrong")).find("no port"), std::string::npos);
}

TEST_F(PortNodeTest, IsTheCameraUnderTheNameDeviceEvenIfNoNodeHasIt)
{
    const char* xml = "<RegisterDescription><IntReg Name=\"R\"><Address>0</Address><Length>1</Length>"
                      "<pPort>Device</pPort></IntReg></RegisterDescription>";
    port.Put(0, {8});

    map = *NodeMap::Load(xml, port);

    EXPECT_EQ(ValueOf(Integer("R")), 8);
}

} // namespace
} // namespace genapi
