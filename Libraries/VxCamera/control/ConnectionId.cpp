#include "VxCamera/control/ConnectionId.h"

#include "VxCamera/control/ControlText.h"

#include <charconv>

namespace control {

namespace {

constexpr std::size_t kMacTextLength = 17; // fixed: six bytes of two digits, five separators
constexpr int kHexadecimal = 16;

bool IsHexDigit(char character)
{
    return std::string_view("0123456789abcdefABCDEF").find(character) != std::string_view::npos;
}

std::optional<gvcp::MacAddress> ParseMac(std::string_view text)
{
    if (text.size() != kMacTextLength)
        return std::nullopt;
    const char separator = text[2];
    if (separator != '-' && separator != ':')
        return std::nullopt;
    gvcp::MacAddress mac{};
    for (std::size_t i = 0; i < mac.size(); ++i) {
        const std::string_view byte = text.substr(3 * i, 2);
        const bool isLast = i + 1 == mac.size();
        if (!IsHexDigit(byte[0]) || !IsHexDigit(byte[1]) || (!isLast && text[3 * i + 2] != separator))
            return std::nullopt;
        std::from_chars(byte.data(), byte.data() + byte.size(), mac[i],
                        kHexadecimal); // two digits: cannot fail
    }
    return mac;
}

std::string_view Trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

ConnectionId::ConnectionId(std::string_view text)
    : m_text(Trimmed(text)), m_mac(ParseMac(m_text)), m_ipAddress(transport::Ipv4Address::Parse(m_text))
{
}

std::string ConnectionId::Of(const gvcp::DiscoveryAck& camera)
{
    return camera.mac == gvcp::MacAddress{} ? transport::Ipv4Address(camera.ipAddress).ToString()
                                            : MacText(camera.mac);
}

ConnectionId::Kind ConnectionId::GetKind() const
{
    if (m_mac)
        return Kind::MacAddress;
    return m_ipAddress ? Kind::IpAddress : Kind::Name;
}

bool ConnectionId::Matches(const gvcp::DiscoveryAck& camera) const
{
    if (m_text.empty())
        return false;
    if (m_mac)
        return camera.mac == *m_mac;
    if (m_ipAddress)
        return camera.ipAddress == m_ipAddress->Value();
    // Users cannot see the blanks around a name that somebody has stored in a camera.
    return Trimmed(camera.serialNumber) == m_text || Trimmed(camera.userDefinedName) == m_text;
}

} // namespace control
