#pragma once

#include "VxCamera/wire/gvcp/Discovery.h"

#include <cstdint>
#include <string>

namespace control {

/// @return  "0x00000A00"
[[nodiscard]] std::string HexText(std::uint32_t value);

/// @return  "02-00-00-00-00-01", the form in which a MAC address identifies a camera
[[nodiscard]] std::string MacText(const gvcp::MacAddress& mac);

} // namespace control
