#include "VxSimulator/device/InitialMemory.h"

#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/CameraDescription.h"
#include "VxSimulator/device/SimulatedRegisters.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace simulator {

namespace {

using Access = DeviceMemory::Access;

constexpr std::uint32_t kProtocolVersion = 0x00020000; // GigE Vision 2.0
constexpr std::uint32_t kInitialHeartbeatMs = 3000;    // what cameras usually have
constexpr std::uint32_t kTicksPerSecond = 1'000'000'000;
constexpr std::uint32_t kInitialPacketSize = 1500; // every network carries it
constexpr std::string_view kDeviceVersion = "1.0";

struct Range {
    std::uint32_t address;
    std::uint32_t size;
    Access access;
};

// Gaps inside the protocol's own blocks read as 0, as in real cameras.
constexpr std::array kRanges{
    Range{bootstrap::kVersion, bootstrap::kCurrentIpConfiguration, Access::ReadOnly},
    Range{bootstrap::kCurrentIpConfiguration, 4, Access::ReadWrite},
    Range{0x0018, bootstrap::kUserDefinedName - 0x0018, Access::ReadOnly},
    Range{bootstrap::kUserDefinedName, bootstrap::kUserDefinedNameBytes, Access::ReadWrite},
    Range{bootstrap::kFirstUrl, 2 * bootstrap::kUrlBytes, Access::ReadOnly},
    Range{bootstrap::kNetworkInterfaceCount, 4, Access::ReadOnly},
    Range{bootstrap::kPersistentIpAddress, 4, Access::ReadWrite},
    Range{bootstrap::kPersistentSubnetMask, 4, Access::ReadWrite},
    Range{bootstrap::kPersistentDefaultGateway, 4, Access::ReadWrite},
    Range{bootstrap::kLinkSpeed, 4, Access::ReadOnly},
    Range{bootstrap::kMessageChannelCount, 0x0938 - 0x0900, Access::ReadOnly},
    Range{bootstrap::kHeartbeatTimeout, 4, Access::ReadWrite},
    Range{bootstrap::kTimestampFrequencyHigh, 8, Access::ReadOnly},
    Range{bootstrap::kTimestampControl, 4, Access::WriteOnly},
    Range{bootstrap::kTimestampValueHigh, 12, Access::ReadOnly},
    Range{bootstrap::kGvcpConfiguration, 4, Access::ReadWrite},
    Range{bootstrap::kPendingTimeout, 8, Access::ReadOnly},
    Range{bootstrap::kGvspConfiguration, 4, Access::ReadWrite},
    Range{bootstrap::kPhysicalLinkCapability, 8, Access::ReadOnly},
    Range{bootstrap::kControlChannelPrivilege, 4, Access::ReadWrite},
    Range{bootstrap::kPrimaryApplicationPort, 0x0A18 - 0x0A04, Access::ReadOnly},
    Range{bootstrap::kStreamChannelPort, 12, Access::ReadWrite},
    Range{0x0D0C, 12, Access::ReadOnly},
    Range{bootstrap::kStreamChannelDestination, 4, Access::ReadWrite},
    Range{bootstrap::kStreamChannelSourcePort, 8, Access::ReadOnly},
    Range{bootstrap::kStreamChannelConfiguration, 4, Access::ReadWrite},
    Range{0x0D28, 0x0D40 - 0x0D28, Access::ReadOnly},

    Range{kAcquisitionMode, 4, Access::ReadWrite},
    Range{kAcquisitionStart, 8, Access::WriteOnly},
    Range{kAcquisitionFrameCount, kTriggerSoftware - kAcquisitionFrameCount, Access::ReadWrite},
    Range{kTriggerSoftware, 4, Access::WriteOnly},
    Range{kExposureAuto, 4, Access::ReadWrite},
    Range{kGainRaw, 12, Access::ReadWrite},
    Range{kSensorWidth, 8, Access::ReadOnly},
    Range{kWidth, kPayloadSize - kWidth, Access::ReadWrite},
    Range{kPayloadSize, 4, Access::ReadOnly},
    Range{kLineSelector, 4, Access::ReadWrite},
    Range{kLineMode, 4 * kLines, Access::ReadOnly},
    Range{kLineInverter, 4 * kLines, Access::ReadWrite},
    Range{kLineStatusAll, 4, Access::ReadOnly},
    Range{kDeviceTemperature, 8, Access::ReadOnly},
    Range{kLutEnable, 4, Access::ReadWrite},
    Range{kLut, kLutBytes, Access::ReadWrite},
    Range{kUserSetSelector, 8, Access::ReadWrite},
    Range{kPacketSizeMax, 4, Access::ReadOnly},
    Range{kChunkModeActive, 4 * (2 + kChunks), Access::ReadWrite},
};

void StoreIdentity(DeviceMemory& memory, const VxSimulatorOptions& options, const NetworkFacts& network)
{
    const auto mac = MacOf(options);
    const auto serial = [&] {
        std::array<char, sizeof("VX001122334455")> text{};
        std::snprintf(text.data(), text.size(), "VX%02X%02X%02X%02X%02X%02X", mac[0], mac[1], mac[2], mac[3],
                      mac[4], mac[5]);
        return std::string(text.data());
    };
    const std::uint32_t linkLocal = bootstrap::kIpLinkLocal;
    memory.Store32(bootstrap::kVersion, kProtocolVersion);
    memory.Store32(bootstrap::kDeviceMode, bootstrap::kDeviceModeBigEndian | bootstrap::kCharacterSetUtf8);
    memory.Store32(bootstrap::kMacHigh, std::uint32_t{mac[0]} << 8 | mac[1]);
    memory.Store(bootstrap::kMacLow, std::as_bytes(std::span(mac)).subspan(2));
    memory.Store32(bootstrap::kSupportedIpConfiguration,
                   linkLocal | bootstrap::kIpDhcp | bootstrap::kIpPersistent);
    memory.Store32(bootstrap::kCurrentIpConfiguration, linkLocal | bootstrap::kIpPersistent);
    memory.Store32(bootstrap::kCurrentIpAddress, options.address.Value());
    memory.Store32(bootstrap::kCurrentSubnetMask, network.subnetMask.Value());
    memory.Store32(bootstrap::kPersistentIpAddress, options.address.Value());
    memory.Store32(bootstrap::kPersistentSubnetMask, network.subnetMask.Value());
    memory.StoreText(bootstrap::kManufacturerName, bootstrap::kManufacturerNameBytes,
                     options.manufacturerName);
    memory.StoreText(bootstrap::kModelName, bootstrap::kModelNameBytes, options.modelName);
    memory.StoreText(bootstrap::kDeviceVersion, bootstrap::kDeviceVersionBytes, kDeviceVersion);
    memory.StoreText(bootstrap::kManufacturerInfo, bootstrap::kManufacturerInfoBytes, "simulated");
    memory.StoreText(bootstrap::kSerialNumber, bootstrap::kSerialNumberBytes,
                     options.serialNumber.empty() ? serial() : options.serialNumber);
    memory.StoreText(bootstrap::kUserDefinedName, bootstrap::kUserDefinedNameBytes, options.userDefinedName);
}

void StoreCapabilities(DeviceMemory& memory, const VxSimulatorOptions& options, const NetworkFacts& network)
{
    using namespace bootstrap;
    memory.Store32(kNetworkInterfaceCount, 1);
    memory.Store32(kLinkSpeed, options.linkSpeedMbps);
    memory.Store32(kStreamChannelCount, 1);
    memory.Store32(kActiveLinkCount, 1);
    memory.Store32(bootstrap::kStreamChannelCapability, kCapabilitySourcePort | kCapabilityStandardIds);
    memory.Store32(kGvcpCapability, kCapabilityUserDefinedName | kCapabilitySerialNumber |
                                        kCapabilityHeartbeatDisable | kCapabilityLinkSpeed |
                                        kCapabilityPrimaryApplication | kCapabilityPacketResend |
                                        kCapabilityWriteMem | kCapabilityConcatenation);
    memory.Store32(kHeartbeatTimeout, kInitialHeartbeatMs);
    memory.Store32(kTimestampFrequencyLow, kTicksPerSecond);
    memory.Store32(kPhysicalLinkCapability, 1);    // one link
    memory.Store32(kPhysicalLinkConfiguration, 1); // in use

    memory.Store32(kStreamChannelPacketSize, std::min(kInitialPacketSize, LargestPacketSize(network)));
    memory.Store32(kStreamChannelSourcePort, network.streamSourcePort);
    memory.Store32(kStreamChannelCapabilities,
                   kChannelCapabilityUnconditionalStreaming | kChannelCapabilityExtendedChunks);
    memory.Store32(kStreamChannelConfiguration, kExtendedChunks);
    memory.Store32(kPacketSizeMax, LargestPacketSize(network));
}

void StoreDescription(DeviceMemory& memory, const VxSimulatorOptions& options)
{
    const std::string description = CameraDescription(
        options.hasSources ? SourceFeatures::Present : SourceFeatures::Absent, options.descriptionBytes);
    memory.Add(kDescription, description.size(), Access::ReadOnly);
    memory.StoreText(kDescription, description.size(), description);

    std::array<char, 64> url{};
    const auto bytes = static_cast<std::int64_t>(description.size()); // some MiB
    const std::int64_t toldBytes = std::max<std::int64_t>(bytes + options.faults.descriptionLengthError, 0);
    std::snprintf(url.data(), url.size(), "Local:VxSimulatedCamera.xml;%X;%llX",
                  static_cast<unsigned>(kDescription), static_cast<unsigned long long>(toldBytes));
    memory.StoreText(bootstrap::kFirstUrl, bootstrap::kUrlBytes, url.data());
    memory.StoreText(bootstrap::kSecondUrl, bootstrap::kUrlBytes, url.data());
}

void AddSources(DeviceMemory& memory)
{
    constexpr std::uint32_t kSources = 2;
    memory.Add(kSourceCount, 4, Access::ReadOnly);
    memory.Add(kSourceSelector, 4, Access::ReadWrite);
    memory.Add(kSourceStreamChannel, 4, Access::ReadOnly);
    memory.Store32(kSourceCount, kSources);
}

} // namespace

std::array<std::uint8_t, 6> MacOf(const VxSimulatorOptions& options)
{
    if (options.mac)
        return *options.mac;
    constexpr std::uint8_t kLocallyAdministered = 0x02; // fixed by Ethernet
    const std::uint32_t address = options.address.Value();
    const auto byte = [address](unsigned shift) { return static_cast<std::uint8_t>(address >> shift); };
    return {kLocallyAdministered, 0, byte(24), byte(16), byte(8), byte(0)};
}

std::uint32_t LargestPacketSize(const NetworkFacts& network)
{
    return std::clamp(network.mtuBytes - network.mtuBytes % kPacketSizeStep, kPacketSizeMin,
                      kPacketSizeLargest);
}

void StoreDefaultFeatures(DeviceMemory& memory, const VxSimulatorOptions& options)
{
    constexpr double kUsualExposure = 10000;
    constexpr double kMicrosecondsPerSecond = 1e6;
    constexpr std::uint32_t kUsualFrameCount = 10;
    memory.Store32(kAcquisitionMode, kModeContinuous);
    memory.Store32(kAcquisitionFrameCount, kUsualFrameCount);
    memory.StoreDouble(kAcquisitionFrameRate, options.frameRateHz);
    // Half of the period at most, so that the exposure does not limit the frame rate.
    memory.StoreDouble(kExposureTime,
                       std::min(kUsualExposure, kMicrosecondsPerSecond / options.frameRateHz / 2));
    memory.Store32(kTriggerMode, 0);
    memory.Store32(kTriggerSource, 0);
    memory.Store32(kExposureAuto, 0);
    memory.Store32(kGainRaw, 0);
    memory.Store32(kBlackLevelRaw, 0);
    memory.StoreFloat(kGamma, 1.0F);
    memory.Store32(kOffsetX, 0);
    memory.Store32(kOffsetY, 0);
    memory.Store32(kWidth, options.widthPx);
    memory.Store32(kHeight, options.heightPx);
    memory.Store32(kPixelFormat, options.pixelFormat);
    memory.Store32(kTestPattern, 0);
    memory.Store32(kLutEnable, 0);
    memory.Store32(kChunkModeActive, 0);
    memory.Store32(kChunkEnable, 1); // the picture
    memory.Store32(kChunkEnable + 4, 0);
    memory.Store32(kChunkEnable + 8, 0);
}

DeviceMemory MakeInitialMemory(const VxSimulatorOptions& options, const NetworkFacts& network)
{
    DeviceMemory memory;
    for (const Range& range : kRanges)
        memory.Add(range.address, range.size, range.access);
    if (options.hasSources)
        AddSources(memory);
    StoreIdentity(memory, options, network);
    StoreCapabilities(memory, options, network);
    StoreDescription(memory, options);

    memory.Store32(kSensorWidth, std::max(kSensorWidthDefault, options.widthPx));
    memory.Store32(kSensorHeight, std::max(kSensorHeightDefault, options.heightPx));
    memory.Store32(kLineMode + 4, 1);     // the second line is an output
    memory.Store32(kLineStatusAll, 0b10); // and it is on
    for (std::uint32_t entry = 0; entry < kLutBytes / 4; ++entry)
        memory.Store32(kLut + 4 * entry, entry * (UINT16_MAX / (kLutBytes / 4 - 1))); // a straight line
    StoreDefaultFeatures(memory, options);
    return memory;
}

} // namespace simulator
