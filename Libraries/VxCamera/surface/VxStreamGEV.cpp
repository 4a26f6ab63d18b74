#include "VxDSSource/camera/VxStreamGEV.h"

#include <utility>

#include "VxCamera/surface/NoThrow.h"
#include "VxCamera/surface/ReceiverOpening.h"
#include "VxCamera/surface/VxStreamImpl.h"

namespace {

VxResult OpenWith(VxStreamImpl& stream, const ReceiverRequest& request)
{
    return NoThrow([&]() -> VxResult {
        if (stream.IsOpen())
            return VxResult(VxError::AlreadyOpen, "the stream is open; close it first");
        auto opened = OpenReceiver(stream.Network(), request);
        if (!opened)
            return opened.Error();
        return stream.Attach(std::move(opened->receiver), opened->reachedAt);
    });
}

} // namespace

VxStreamGEV::VxStreamGEV() : VxStream(std::make_unique<VxStreamImpl>()) {}

VxStreamGEV::~VxStreamGEV() = default;

VxResult VxStreamGEV::Open(const VxString& connectionId)
{
    return OpenWith(Impl(), {connectionId, 0, {}, std::nullopt, 0});
}

// The channel needs no place here: packets of one channel come to one port, and whoever asks for packets
// again knows the channel from the device.
VxResult VxStreamGEV::Open(const VxString& connectionId, std::uint16_t localPort, std::uint16_t /*channel*/,
                           const VxString& localIpAddress, std::uint32_t bufferCapacity)
{
    return OpenWith(Impl(), {connectionId, localPort, localIpAddress, std::nullopt, bufferCapacity});
}

VxResult VxStreamGEV::Open(const VxString& connectionId, const VxString& multicastAddress,
                           std::uint16_t dataPort, std::uint16_t /*channel*/, const VxString& localIpAddress,
                           std::uint32_t bufferCapacity)
{
    const auto group = transport::Ipv4Address::Parse(multicastAddress.Narrow());
    if (!group || !group->IsMulticast())
        return VxResult(VxError::InvalidParameter,
                        "\"" + multicastAddress.Narrow() +
                            "\" is no multicast group (224.0.0.0 to 239.255.255.255)");
    return OpenWith(Impl(), {connectionId, dataPort, localIpAddress, group, bufferCapacity});
}

VxString VxStreamGEV::GetLocalIPAddress() const
{
    return Impl().IsOpen() ? VxString(Impl().ReachedAt().ToString()) : VxString();
}

std::uint16_t VxStreamGEV::GetLocalPort() const
{
    std::uint16_t port = 0;
    Impl().WithReceiver(
        [&](receive::StreamReceiver& receiver) { port = receiver.Socket().LocalEndpoint().port; });
    return port;
}

VxStreamType VxStreamGEV::GetType() const
{
    return VxStreamType::Gev;
}
