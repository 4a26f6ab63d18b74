#include "VxSimulator/device/InitialMemory.h"

#include "VxCamera/wire/gvcp/Discovery.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/CameraDescription.h"
#include "VxSimulator/device/SimulatedRegisters.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using namespace simulator;
using gvcp::Status;
using transport::Ipv4Address;

std::string Text(const DeviceMemory& memory, std::uint32_t address, std::size_t size)
{
    bytes::Vector bytes(size);
    memory.Load(address, bytes);
    std::string text;
    for (const std::byte byte : bytes)
        if (byte != std::byte{0})
            text.push_back(static_cast<char>(byte));
    return text;
}

VxSimulatorOptions Options()
{
    VxSimulatorOptions options;
    options.address = Ipv4Address(127, 0, 0, 5);
    options.serialNumber = "S-1";
    options.userDefinedName = "left";
    options.mac = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
    return options;
}

TEST(InitialMemoryTest, BeginsWithWhatDiscoveryTells)
{
    const auto memory = MakeInitialMemory(Options(), {.subnetMask = Ipv4Address(255, 0, 0, 0)});
    bytes::Vector identity(gvcp::kDiscoveryAckBytes);
    ASSERT_EQ(memory.Read(0, identity), Status::Success);

    const auto ack = gvcp::ParseDiscoveryAck(identity);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->majorVersion, 2);
    EXPECT_EQ(ack->minorVersion, 0);
    EXPECT_EQ(ack->deviceMode, 0x80000001u) << "big endian, UTF-8";
    EXPECT_EQ(ack->mac, (gvcp::MacAddress{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
    EXPECT_EQ(ack->ipAddress, 0x7F000005u);
    EXPECT_EQ(ack->subnetMask, 0xFF000000u);
    EXPECT_EQ(ack->manufacturerName, "Vexa");
    EXPECT_EQ(ack->modelName, "SimulatedCamera");
    EXPECT_EQ(ack->serialNumber, "S-1");
    EXPECT_EQ(ack->userDefinedName, "left");
}

TEST(InitialMemoryTest, MacAndSerialNumberAreMadeFromTheAddress)
{
    auto options = Options();
    options.mac.reset();
    options.serialNumber.clear();

    const auto memory = MakeInitialMemory(options, {});

    EXPECT_EQ(MacOf(options), (std::array<std::uint8_t, 6>{0x02, 0x00, 127, 0, 0, 5}));
    EXPECT_EQ(Text(memory, bootstrap::kSerialNumber, 16), "VX02007F000005");
}

TEST(InitialMemoryTest, TheUrlLeadsToTheDescription)
{
    const auto memory = MakeInitialMemory(Options(), {});
    const std::string url = Text(memory, bootstrap::kFirstUrl, bootstrap::kUrlBytes);
    const auto first = url.find(';');
    const auto second = url.rfind(';');
    ASSERT_EQ(url.substr(0, first), "Local:VxSimulatedCamera.xml");
    const auto address = static_cast<std::uint32_t>(std::stoul(url.substr(first + 1), nullptr, 16));
    const std::size_t size = std::stoul(url.substr(second + 1), nullptr, 16);

    EXPECT_EQ(Text(memory, address, size), CameraDescription(SourceFeatures::Present));
    EXPECT_EQ(Text(memory, bootstrap::kSecondUrl, bootstrap::kUrlBytes), url);
}

TEST(InitialMemoryTest, TheDescriptionCannotBeWritten)
{
    const auto memory = MakeInitialMemory(Options(), {});

    EXPECT_EQ(memory.CheckWrite(kDescription, 4), Status::WriteProtect);
}

TEST(InitialMemoryTest, SourcesCanBeAbsent)
{
    auto options = Options();
    options.hasSources = false;

    const auto memory = MakeInitialMemory(options, {});

    EXPECT_EQ(memory.CheckWrite(kSourceSelector, 4), Status::InvalidAddress);
}

TEST(InitialMemoryTest, PacketSizesFitTheNetwork)
{
    EXPECT_EQ(LargestPacketSize({.mtuBytes = 1500}), 1500u);
    EXPECT_EQ(LargestPacketSize({.mtuBytes = 1499}), 1496u);
    EXPECT_EQ(LargestPacketSize({.mtuBytes = 65536}), 65532u) << "no IP packet is longer than 65535";
    EXPECT_EQ(LargestPacketSize({.mtuBytes = 68}), 220u);

    const auto memory = MakeInitialMemory(Options(), {.mtuBytes = 1400});
    EXPECT_EQ(memory.Load32(bootstrap::kStreamChannelPacketSize), 1400u);
    EXPECT_EQ(memory.Load32(kPacketSizeMax), 1400u);
}

TEST(InitialMemoryTest, TellsTheStreamsSourcePort)
{
    const auto memory = MakeInitialMemory(Options(), {.streamSourcePort = 4711});

    EXPECT_EQ(memory.Load32(bootstrap::kStreamChannelSourcePort), 4711u);
    EXPECT_NE(memory.Load32(bootstrap::kStreamChannelCapability) & bootstrap::kCapabilitySourcePort, 0u);
}

TEST(InitialMemoryTest, OffersWhatItCan)
{
    const auto memory = MakeInitialMemory(Options(), {});

    const std::uint32_t capability = memory.Load32(bootstrap::kGvcpCapability);
    EXPECT_NE(capability & bootstrap::kCapabilityPacketResend, 0u);
    EXPECT_NE(capability & bootstrap::kCapabilityWriteMem, 0u);
    EXPECT_NE(capability & bootstrap::kCapabilityConcatenation, 0u);
    EXPECT_EQ(capability & bootstrap::kCapabilityPendingAck, 0u) << "it never needs long";
    EXPECT_EQ(capability & bootstrap::kCapabilityEvent, 0u);
    EXPECT_EQ(memory.Load32(bootstrap::kMessageChannelCount), 0u);
    EXPECT_EQ(memory.Load32(bootstrap::kStreamChannelCount), 1u);
    EXPECT_EQ(memory.Load32(bootstrap::kHeartbeatTimeout), 3000u);
    EXPECT_EQ(memory.Load32(bootstrap::kTimestampFrequencyLow), 1000000000u);
}

TEST(InitialMemoryTest, TheSensorIsLargeEnoughForThePicture)
{
    auto options = Options();
    options.widthPx = 8192;
    options.heightPx = 100;

    const auto memory = MakeInitialMemory(options, {});

    EXPECT_EQ(memory.Load32(kSensorWidth), 8192u);
    EXPECT_EQ(memory.Load32(kSensorHeight), 3072u);
}

TEST(InitialMemoryTest, TheExposureAllowsTheFrameRate)
{
    auto options = Options();
    options.frameRateHz = 500;

    const auto memory = MakeInitialMemory(options, {});

    EXPECT_EQ(memory.LoadDouble(kAcquisitionFrameRate), 500.0);
    EXPECT_LT(memory.LoadDouble(kExposureTime), 1e6 / 500);
}

} // namespace
