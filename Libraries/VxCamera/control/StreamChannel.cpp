#include "VxCamera/control/StreamChannel.h"

#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <algorithm>
#include <array>
#include <string>

namespace control {

namespace {

// What networks carry in one packet, the largest first. Chosen among usual limits: jumbo frames, switches
// that count the Ethernet header, plain Ethernet, tunnels, and the least that every host must take.
constexpr std::array<std::uint32_t, 6> kUsualSizes{9000, 8000, 4000, 1500, 1400, 576};

} // namespace

std::uint32_t StreamChannel::Register(std::uint32_t ofChannel0) const
{
    return bootstrap::StreamChannelRegister(ofChannel0, m_channel);
}

VxExpected<std::uint32_t> StreamChannel::PacketSize()
{
    const auto value = PacketSizeRegister();
    return value ? VxExpected<std::uint32_t>(*value & bootstrap::kPacketSizeMask) : value;
}

VxExpected<std::uint32_t> StreamChannel::PacketSizeRegister()
{
    return m_client.ReadRegister(Register(bootstrap::kStreamChannelPacketSize));
}

VxResult StreamChannel::RestorePacketSizeRegister(std::uint32_t value)
{
    return m_client.WriteRegister(Register(bootstrap::kStreamChannelPacketSize),
                                  value & ~bootstrap::kFireTestPacket);
}

VxExpected<std::uint32_t> StreamChannel::SetPacketSize(std::uint32_t bytes, Fragments fragments)
{
    const std::uint32_t address = Register(bootstrap::kStreamChannelPacketSize);
    const auto present = m_client.ReadRegister(address);
    if (!present)
        return present;
    std::uint32_t value = (*present & ~(bootstrap::kPacketSizeMask | bootstrap::kFireTestPacket)) |
                          std::min(bytes, bootstrap::kPacketSizeMask);
    if (fragments == Fragments::Never)
        value |= bootstrap::kDoNotFragment;
    if (auto written = m_client.WriteRegister(address, value); !written.IsOK())
        return written;
    return PacketSize();
}

VxResult StreamChannel::FireTestPacket()
{
    const std::uint32_t address = Register(bootstrap::kStreamChannelPacketSize);
    const auto present = m_client.ReadRegister(address);
    if (!present)
        return present.Error();
    return m_client.WriteRegister(address, *present | bootstrap::kFireTestPacket | bootstrap::kDoNotFragment);
}

VxExpected<std::uint32_t> StreamChannel::StepPacketSizeDown()
{
    const auto present = PacketSize();
    if (!present)
        return present;
    for (const std::uint32_t size : kUsualSizes) {
        if (size >= *present)
            continue;
        const auto set = SetPacketSize(size, Fragments::AsBefore);
        if (!set || *set < *present)
            return set;
    }
    return VxResult(VxError::OutOfRange, "camera " + m_client.Device().address.ToString() +
                                             " sends packets of " + std::to_string(*present) +
                                             " bytes; smaller ones make no sense");
}

VxResult StreamChannel::Open(const transport::Ipv4Endpoint& receiver)
{
    if (auto written =
            m_client.WriteRegister(Register(bootstrap::kStreamChannelDestination), receiver.address.Value());
        !written.IsOK())
        return written;
    // The port comes last: the camera starts to send once it is set.
    return m_client.WriteRegister(Register(bootstrap::kStreamChannelPort), receiver.port);
}

VxResult StreamChannel::Close()
{
    return m_client.WriteRegister(Register(bootstrap::kStreamChannelPort), 0);
}

} // namespace control
