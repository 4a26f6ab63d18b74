#include "VxCamera/control/DescriptionLoader.h"

#include "VxCamera/control/CommandClient.h"
#include "VxCamera/wire/gvcp/ReadMem.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

namespace control {
namespace {

class DescriptionLoaderTest : public testing::Test {
protected:
    VxExpected<std::string> Load(const DescriptionLoader::Use& use = {})
    {
        CommandClient client(std::move(*m_sockets.OpenUdp({})), m_camera.endpoint, m_clock);
        return DescriptionLoader(client).Load(use);
    }

    FakeClock m_clock;
    FakeCamera m_camera{m_clock};
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_camera.OnDatagram(socket, datagram, destination);
                                }};
};

TEST_F(DescriptionLoaderTest, ReadsTheFileFromTheCamerasMemory)
{
    std::string xml = "<RegisterDescription>";
    xml.append(5000, 'x');
    m_camera.SetMemory(0x10000, xml);
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;139D"); // 5021

    const auto loaded = Load();

    ASSERT_TRUE(loaded) << loaded.Result().GetDescription().Narrow();
    EXPECT_EQ(*loaded, xml);
}

TEST_F(DescriptionLoaderTest, AnUnknownLengthEndsWhereMemoryDoes)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;FFFFFF00;0");
    // A camera with memory up to the last address.
    FakeSocketFactory sockets(m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                              const transport::Ipv4Endpoint& destination) {
        const auto packet = gvcp::ParseCommand(datagram);
        const auto command = gvcp::ParseReadMemCommand(packet->payload);
        if (!command || command->address < 0xFFFFFF00)
            return m_camera.OnDatagram(socket, datagram, destination);
        const std::vector<std::byte> data(command->count, std::byte{'z'});
        const auto ack = gvcp::MakeReadMemAck(packet->header.requestId, {command->address, data});
        socket.Arrive(m_camera.endpoint, ack->Bytes(), m_camera.delay);
    });
    CommandClient client(std::move(*sockets.OpenUdp({})), m_camera.endpoint, m_clock);

    const auto loaded = DescriptionLoader(client).Load();

    ASSERT_TRUE(loaded) << loaded.Result().GetDescription().Narrow();
    EXPECT_EQ(*loaded, std::string(256, 'z'));
}

TEST_F(DescriptionLoaderTest, FillingZerosAreCutOff)
{
    m_camera.SetMemory(0x10000, "<a/>");
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;200");

    EXPECT_EQ(Load().ValueOr(""), "<a/>");
}

TEST_F(DescriptionLoaderTest, AnUnknownLengthEndsAtTheFirstZero)
{
    m_camera.SetMemory(0x10000, std::string(700, 'y'));
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;0");

    EXPECT_EQ(Load().ValueOr(""), std::string(700, 'y'));
}

TEST_F(DescriptionLoaderTest, ALengthBeyondTheMemoryIsCut)
{
    const std::uint32_t start = 0x3F000; // 4096 bytes before the end
    m_camera.SetMemory(start, std::string(4096, 'z'));
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;3F000;8000");

    EXPECT_EQ(Load().ValueOr(""), std::string(4096, 'z'));
}

TEST_F(DescriptionLoaderTest, ALengthBeyondTheMemoryLosesNothingOfItsEnd)
{
    const std::string text(4096 + 12, 'z'); // ends in the middle of a step
    const auto start = static_cast<std::uint32_t>(m_camera.memory.size() - text.size());
    m_camera.SetMemory(start, text);
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;3EFF4;100000");
    ASSERT_EQ(start, 0x3EFF4u);

    EXPECT_EQ(Load().ValueOr(""), text);
}

TEST_F(DescriptionLoaderTest, AFileThatComesTooSlowlyIsGivenUp)
{
    using namespace std::chrono_literals;
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;30000");
    m_camera.delay = 190ms; // just below the time-out of a command
    const auto start = m_clock.Now();

    const auto loaded = Load();

    EXPECT_EQ(loaded.Result().Code(), VxError::Timeout);
    EXPECT_LT(m_clock.Now() - start, 35s);
}

TEST_F(DescriptionLoaderTest, TheSecondPlaceIsTriedWhenTheFirstFails)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "http://example.org/camera.xml");
    m_camera.SetMemory(bootstrap::kSecondUrl, "Local:camera.xml;10000;4");
    m_camera.SetMemory(0x10000, "<b/>");

    EXPECT_EQ(Load().ValueOr(""), "<b/>");
}

TEST_F(DescriptionLoaderTest, TheSecondPlaceIsTriedWhenTheFirstFileCannotBeUsed)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;4");
    m_camera.SetMemory(bootstrap::kSecondUrl, "Local:camera.xml;20000;4");
    m_camera.SetMemory(0x10000, "<a/>");
    m_camera.SetMemory(0x20000, "<b/>");
    const auto refuse = [](const std::string& wanted) {
        return [wanted](const std::string& file) {
            return file == wanted ? VxResult::Ok() : VxResult(VxError::InvalidData, file + " is damaged");
        };
    };

    EXPECT_EQ(Load(refuse("<a/>")).ValueOr(""), "<a/>");
    EXPECT_EQ(Load(refuse("<b/>")).ValueOr(""), "<b/>");
    EXPECT_EQ(Load(refuse("")).Result().Code(), VxError::InvalidData);
    EXPECT_EQ(Load(refuse("")).Result().GetDescription().Narrow(), "<a/> is damaged");
}

TEST_F(DescriptionLoaderTest, AnArchiveBehindOtherBytesKeepsItsZeros)
{
    const std::string archive("junk\0PK\x03\x04 a\0\0", 13);
    m_camera.SetMemory(0x10000, archive);
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.ZIP;10000;D");

    EXPECT_EQ(Load().ValueOr(""), archive);
}

TEST_F(DescriptionLoaderTest, AnotherMachinesFileIsNotSupportedAndNamed)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "http://example.org/camera.xml");

    const auto loaded = Load();

    ASSERT_FALSE(loaded);
    EXPECT_EQ(loaded.Error().Code(), VxError::NotSupported);
    EXPECT_NE(loaded.Error().GetDescription().Narrow().find("http://example.org/camera.xml"),
              std::string::npos);
    EXPECT_NE(loaded.Error().GetDescription().Narrow().find("192.168.1.20"), std::string::npos);
}

TEST_F(DescriptionLoaderTest, AnArchiveComesWithAllOfItsZeros)
{
    const std::string archive("PK\x03\x04 a\0b\0\0", 10);
    m_camera.SetMemory(0x10000, archive);
    for (const char* url : {"Local:camera.zip;10000;A", "Local:camera.xml;10000;A"}) {
        m_camera.SetMemory(bootstrap::kFirstUrl, url);

        EXPECT_EQ(Load().ValueOr(""), archive) << url;
    }
}

TEST_F(DescriptionLoaderTest, AnArchiveOfUnknownLengthIsReadToTheEndOfTheMemory)
{
    const std::uint32_t start = 0x3F000; // 4096 bytes before the end
    std::string archive("PK\x03\x04 a\0b", 8);
    archive.resize(4096);
    m_camera.SetMemory(start, archive);
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.zip;3F000;0");

    EXPECT_EQ(Load().ValueOr(""), archive);
}

TEST_F(DescriptionLoaderTest, ALengthThatLiesIsInvalid)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;FFFFFFFF");

    EXPECT_EQ(Load().Result().Code(), VxError::InvalidData);
    EXPECT_LE(m_camera.seen.size(), 2u); // the two places, no byte of the file
}

TEST_F(DescriptionLoaderTest, AnEmptyFileIsInvalid)
{
    m_camera.SetMemory(bootstrap::kFirstUrl, "Local:camera.xml;10000;10");

    EXPECT_EQ(Load().Result().Code(), VxError::InvalidData);
}

TEST_F(DescriptionLoaderTest, ACameraWithoutDescriptionIsNotFound)
{
    EXPECT_EQ(Load().Result().Code(), VxError::NotFound);
}

TEST_F(DescriptionLoaderTest, ALinkThatFailsEndsTheAttempt)
{
    m_camera.isGone = true;

    EXPECT_EQ(Load().Result().Code(), VxError::Timeout);
}

} // namespace
} // namespace control
