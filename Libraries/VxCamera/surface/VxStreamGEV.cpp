#include "VxDSSource/camera/VxStreamGEV.h"

#include <string>
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
        auto receiver = OpenReceiver(stream.Network(), request);
        if (!receiver)
            return receiver.Error();
        return stream.Attach(*std::move(receiver));
    });
}

} // namespace

VxStreamGEV::VxStreamGEV() : VxStream(std::make_unique<VxStreamImpl>()) {}

VxStreamGEV::~VxStreamGEV() = default;

VxResult VxStreamGEV::Open(const VxString& connectionId)
{
    return OpenWith(Impl(), {connectionId, 0, {}, std::nullopt});
}

// Channel and capacity need no place here: packets of one channel come to one port, and the receiver takes
// buffers from the pipeline one by one, so that there is no queue of its own whose size could be set.
VxResult VxStreamGEV::Open(const VxString& connectionId, std::uint16_t localPort, std::uint16_t /*channel*/,
                           const VxString& localIpAddress, std::uint32_t /*bufferCapacity*/)
{
    return OpenWith(Impl(), {connectionId, localPort, localIpAddress, std::nullopt});
}

VxResult VxStreamGEV::Open(const VxString& connectionId, const VxString& multicastAddress,
                           std::uint16_t dataPort, std::uint16_t /*channel*/, const VxString& localIpAddress,
                           std::uint32_t /*bufferCapacity*/)
{
    const auto group = transport::Ipv4Address::Parse(multicastAddress.Narrow());
    if (!group || !group->IsMulticast())
        return VxResult(VxError::InvalidParameter,
                        "\"" + multicastAddress.Narrow() +
                            "\" is no multicast group (224.0.0.0 to 239.255.255.255)");
    return OpenWith(Impl(), {connectionId, dataPort, localIpAddress, group});
}

VxString VxStreamGEV::GetLocalIPAddress() const
{
    VxString address;
    Impl().WithReceiver([&](receive::StreamReceiver& receiver) {
        address = receiver.Socket().LocalEndpoint().address.ToString();
    });
    return address;
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
