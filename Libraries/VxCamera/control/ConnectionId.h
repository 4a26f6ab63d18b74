#pragma once

#include "VxCamera/transport/Ipv4Address.h"
#include "VxCamera/wire/gvcp/Discovery.h"

#include <optional>
#include <string>
#include <string_view>

namespace control {

/// What a user names a camera by.
///
/// Owner:  anybody, by value.
/// Thread: like std::string.
class ConnectionId {
public:
    enum class Kind {
        MacAddress, ///< six hexadecimal bytes with '-' or ':' between them
        IpAddress,  ///< dotted decimal
        Name,       ///< serial number or user-defined name
    };

    explicit ConnectionId(std::string_view text);

    /// The id under which a camera is listed: its MAC address; where that is all zero, its IP address.
    [[nodiscard]] static std::string Of(const gvcp::DiscoveryAck& camera);

    [[nodiscard]] Kind GetKind() const;
    [[nodiscard]] const std::string& Text() const { return m_text; }
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }

    /// Only for an IP address.
    [[nodiscard]] transport::Ipv4Address IpAddress() const { return *m_ipAddress; }

    [[nodiscard]] bool Matches(const gvcp::DiscoveryAck& camera) const;

private:
    std::string m_text; // without blanks at either end
    std::optional<gvcp::MacAddress> m_mac;
    std::optional<transport::Ipv4Address> m_ipAddress;
};

} // namespace control
