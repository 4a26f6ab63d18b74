#include "VxCamera/transport/Ipv4Endpoint.h"

namespace transport {

std::string Ipv4Endpoint::ToString() const
{
    return address.ToString() + ":" + std::to_string(port);
}

} // namespace transport
