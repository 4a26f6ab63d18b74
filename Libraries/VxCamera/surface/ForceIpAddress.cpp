#include "VxCamera/surface/ForceIpAddress.h"

#include "VxCamera/control/AddressForcer.h"
#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/NoThrow.h"

#include <string>

namespace {

VxExpected<transport::Ipv4Address> Parse(const VxString& text)
{
    const auto address = transport::Ipv4Address::Parse(text.Narrow());
    if (!address)
        return VxResult(VxError::InvalidParameter, "\"" + text.Narrow() + "\" is no IPv4 address");
    return *address;
}

VxResult Force(const ForcedIpAddress& wanted, std::chrono::milliseconds timeout)
{
    const auto address = Parse(wanted.ipAddress);
    const auto mask = Parse(wanted.subnetMask);
    const auto gateway = wanted.gateway.IsEmpty() ? transport::Ipv4Address() : Parse(wanted.gateway);
    for (const auto* each : {&address, &mask, &gateway})
        if (!*each)
            return each->Error();
    CameraNetwork network;
    control::AddressForcer forcer(network.Parts());
    return forcer
        .Force(control::ConnectionId(wanted.connectionId.Narrow()), {*address, *mask, *gateway}, timeout)
        .Result();
}

} // namespace

VxResult ForceIpAddress(const ForcedIpAddress& wanted, std::uint32_t timeoutMs)
{
    return NoThrow([&] { return Force(wanted, std::chrono::milliseconds(timeoutMs)); });
}
