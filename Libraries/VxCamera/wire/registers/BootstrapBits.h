#pragma once

#include <cstdint>

/// Bits of the bootstrap registers, as masks of the 32-bit value. Origin: fixed by the protocol.
namespace bootstrap {

// Device mode.
constexpr std::uint32_t kDeviceModeBigEndian = 0x80000000;
constexpr std::uint32_t kDeviceModeClassMask = 0x70000000; // 0 is a transmitter, that is a camera
constexpr std::uint32_t kDeviceModeCharacterSetMask = 0x0000000F;
constexpr std::uint32_t kCharacterSetUtf8 = 1;
constexpr std::uint32_t kCharacterSetAscii = 2;

// Supported and current IP configuration.
constexpr std::uint32_t kIpLinkLocal = 0x00000004;
constexpr std::uint32_t kIpDhcp = 0x00000002;
constexpr std::uint32_t kIpPersistent = 0x00000001;

// GVCP capability.
constexpr std::uint32_t kCapabilityUserDefinedName = 0x80000000;
constexpr std::uint32_t kCapabilitySerialNumber = 0x40000000;
constexpr std::uint32_t kCapabilityHeartbeatDisable = 0x20000000;
constexpr std::uint32_t kCapabilityLinkSpeed = 0x10000000;
constexpr std::uint32_t kCapabilityPrimaryApplication = 0x08000000; // its address and port can be read
constexpr std::uint32_t kCapabilityManifestTable = 0x04000000;
constexpr std::uint32_t kCapabilityTestData = 0x02000000;
constexpr std::uint32_t kCapabilityDiscoveryAckDelay = 0x01000000;
constexpr std::uint32_t kCapabilityDiscoveryAckDelayWritable = 0x00800000;
constexpr std::uint32_t kCapabilityExtendedStatus11 = 0x00400000;
constexpr std::uint32_t kCapabilityExtendedStatus20 = 0x00040000;
constexpr std::uint32_t kCapabilityAction = 0x00000040;
constexpr std::uint32_t kCapabilityPendingAck = 0x00000020;
constexpr std::uint32_t kCapabilityEventData = 0x00000010;
constexpr std::uint32_t kCapabilityEvent = 0x00000008;
constexpr std::uint32_t kCapabilityPacketResend = 0x00000004;
constexpr std::uint32_t kCapabilityWriteMem = 0x00000002;
constexpr std::uint32_t kCapabilityConcatenation = 0x00000001; // several registers in one command

// GVCP configuration.
constexpr std::uint32_t kGvcpExtendedStatus20Enable = 0x00040000;
constexpr std::uint32_t kGvcpExtendedStatus11Enable = 0x00000004;
constexpr std::uint32_t kGvcpPendingAckEnable = 0x00000002;
constexpr std::uint32_t kGvcpHeartbeatDisable = 0x00000001;

// GVSP configuration.
constexpr std::uint32_t kGvspExtendedIds = 0x40000000; // 64-bit block ids

// Stream channel capability (of the device), and of one channel.
constexpr std::uint32_t kCapabilitySourcePort = 0x80000000;
constexpr std::uint32_t kCapabilityStandardIds = 0x40000000; // 16-bit block ids
constexpr std::uint32_t kChannelCapabilityUnconditionalStreaming = 0x00000002;
constexpr std::uint32_t kChannelCapabilityExtendedChunks = 0x00000001;

// Timestamp control.
constexpr std::uint32_t kTimestampLatch = 0x00000002;
constexpr std::uint32_t kTimestampReset = 0x00000001;

// Control channel privilege.
constexpr std::uint32_t kPrivilegeExclusive = 0x00000001;
constexpr std::uint32_t kPrivilegeControl = 0x00000002;
constexpr std::uint32_t kPrivilegeSwitchoverEnable = 0x00000004;
constexpr std::uint32_t kPrivilegeAnyControl = kPrivilegeExclusive | kPrivilegeControl;

// Stream channel port and packet size.
constexpr std::uint32_t kStreamPortMask = 0x0000FFFF; // UDP port of the receiver; 0 closes the channel
constexpr std::uint32_t kFireTestPacket = 0x80000000; // clears itself
constexpr std::uint32_t kDoNotFragment = 0x40000000;
constexpr std::uint32_t kPixelsBigEndian = 0x20000000;
constexpr std::uint32_t kPacketSizeMask = 0x0000FFFF; // bytes with IP, UDP and GVSP headers, without Ethernet

// Stream channel configuration.
constexpr std::uint32_t kUnconditionalStreaming = 0x00000002;
constexpr std::uint32_t kExtendedChunks = 0x00000001; // chunks follow an image instead of being the payload

} // namespace bootstrap
