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
