#pragma once

#include <cstddef>
#include <cstdint>

/// Addresses of the registers that every GigE Vision device has at the same place.
///
/// Origin of all numbers: fixed by the protocol. A register has 32 bits unless a size is named here.
namespace bootstrap {

// Identity. The discovery acknowledge is a copy of the bytes from 0 on.
constexpr std::uint32_t kVersion = 0x0000;
constexpr std::uint32_t kDeviceMode = 0x0004;
constexpr std::uint32_t kMacHigh = 0x0008;
constexpr std::uint32_t kMacLow = 0x000C;
constexpr std::uint32_t kSupportedIpConfiguration = 0x0010;
constexpr std::uint32_t kCurrentIpConfiguration = 0x0014;
constexpr std::uint32_t kCurrentIpAddress = 0x0024;
constexpr std::uint32_t kCurrentSubnetMask = 0x0034;
constexpr std::uint32_t kCurrentDefaultGateway = 0x0044;
constexpr std::uint32_t kManufacturerName = 0x0048;
constexpr std::uint32_t kModelName = 0x0068;
constexpr std::uint32_t kDeviceVersion = 0x0088;
constexpr std::uint32_t kManufacturerInfo = 0x00A8;
constexpr std::uint32_t kSerialNumber = 0x00D8;
constexpr std::uint32_t kUserDefinedName = 0x00E8;
constexpr std::uint32_t kFirstUrl = 0x0200;
constexpr std::uint32_t kSecondUrl = 0x0400;

constexpr std::size_t kManufacturerNameBytes = 32;
constexpr std::size_t kModelNameBytes = 32;
constexpr std::size_t kDeviceVersionBytes = 32;
constexpr std::size_t kManufacturerInfoBytes = 48;
constexpr std::size_t kSerialNumberBytes = 16;
constexpr std::size_t kUserDefinedNameBytes = 16;
constexpr std::size_t kUrlBytes = 512;

// Network interface 0.
constexpr std::uint32_t kNetworkInterfaceCount = 0x0600;
constexpr std::uint32_t kPersistentIpAddress = 0x064C;
constexpr std::uint32_t kPersistentSubnetMask = 0x065C;
constexpr std::uint32_t kPersistentDefaultGateway = 0x066C;
constexpr std::uint32_t kLinkSpeed = 0x0670; // Mbit/s

// Counts, capabilities, time.
constexpr std::uint32_t kMessageChannelCount = 0x0900;
constexpr std::uint32_t kStreamChannelCount = 0x0904;
constexpr std::uint32_t kActionSignalCount = 0x0908;
constexpr std::uint32_t kActionDeviceKey = 0x090C;
constexpr std::uint32_t kActiveLinkCount = 0x0910;
constexpr std::uint32_t kStreamChannelCapability = 0x092C;
constexpr std::uint32_t kMessageChannelCapability = 0x0930;
constexpr std::uint32_t kGvcpCapability = 0x0934;
constexpr std::uint32_t kHeartbeatTimeout = 0x0938;       // ms
constexpr std::uint32_t kTimestampFrequencyHigh = 0x093C; // Hz; 0 in both halves: no timestamp
constexpr std::uint32_t kTimestampFrequencyLow = 0x0940;
constexpr std::uint32_t kTimestampControl = 0x0944;
constexpr std::uint32_t kTimestampValueHigh = 0x0948; // as latched
constexpr std::uint32_t kTimestampValueLow = 0x094C;
constexpr std::uint32_t kDiscoveryAckDelay = 0x0950; // ms
constexpr std::uint32_t kGvcpConfiguration = 0x0954;
constexpr std::uint32_t kPendingTimeout = 0x0958; // ms
constexpr std::uint32_t kControlSwitchoverKey = 0x095C;
constexpr std::uint32_t kGvspConfiguration = 0x0960;
constexpr std::uint32_t kPhysicalLinkCapability = 0x0964;
constexpr std::uint32_t kPhysicalLinkConfiguration = 0x0968;

// Control channel.
constexpr std::uint32_t kControlChannelPrivilege = 0x0A00; // "CCP"
constexpr std::uint32_t kPrimaryApplicationPort = 0x0A04;
constexpr std::uint32_t kPrimaryApplicationIp = 0x0A14;

// Message channel.
constexpr std::uint32_t kMessageChannelPort = 0x0B00;
constexpr std::uint32_t kMessageChannelDestination = 0x0B10;
constexpr std::uint32_t kMessageChannelTimeout = 0x0B14; // ms
constexpr std::uint32_t kMessageChannelRetryCount = 0x0B18;
constexpr std::uint32_t kMessageChannelSourcePort = 0x0B1C;

// Stream channel 0; the others follow at equal steps.
constexpr std::uint32_t kStreamChannelStep = 0x0040;
constexpr std::uint32_t kStreamChannelPort = 0x0D00;        // "SCP"
constexpr std::uint32_t kStreamChannelPacketSize = 0x0D04;  // "SCPS"
constexpr std::uint32_t kStreamChannelPacketDelay = 0x0D08; // "SCPD", ticks
constexpr std::uint32_t kStreamChannelDestination = 0x0D18; // "SCDA"
constexpr std::uint32_t kStreamChannelSourcePort = 0x0D1C;  // "SCSP"
constexpr std::uint32_t kStreamChannelCapabilities = 0x0D20;
constexpr std::uint32_t kStreamChannelConfiguration = 0x0D24; // "SCCFG"

constexpr std::uint32_t kManifestTable = 0x9000;
constexpr std::uint32_t kFirstDeviceSpecific = 0xA000;

/// @param channel  from 0; the product must stay below the manifest table, so at most 524
/// @return  address of a stream channel's register, given that of channel 0
constexpr std::uint32_t StreamChannelRegister(std::uint32_t registerOfChannel0, std::uint32_t channel)
{
    return registerOfChannel0 + kStreamChannelStep * channel;
}

} // namespace bootstrap
