#include "VxCamera/control/ControlText.h"

#include <array>
#include <cstdio>

namespace control {

std::string HexText(std::uint32_t value)
{
    std::array<char, sizeof("0x00000000")> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(value)); // the same width
    return text.data();
}

std::string MacText(const gvcp::MacAddress& mac)
{
    std::string text;
    for (const std::uint8_t byte : mac) {
        std::array<char, sizeof("-00")> part{};
        std::snprintf(part.data(), part.size(), text.empty() ? "%02X" : "-%02X", static_cast<unsigned>(byte));
        text += part.data();
    }
    return text;
}

} // namespace control
