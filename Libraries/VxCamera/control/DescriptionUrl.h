#pragma once

#include "VxBase/VxExpected.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace control {

/// Where a camera says that its description is.
struct DescriptionUrl {
    enum class Place {
        Device, ///< in the camera's memory
        File,   ///< on this machine
        Http,   ///< on a server
    };

    Place place = Place::Device;
    std::string name; ///< of the file in the camera; for the other places all that follows the scheme
    std::uint32_t address = 0;     ///< Device: of the first byte
    std::uint32_t lengthBytes = 0; ///< Device; 0: not told

    bool operator==(const DescriptionUrl&) const = default;
};

/// Reads the text of a URL register.
///
/// "Local:name.xml;A000;1F00", as cameras really write it: any case, leading spaces, "Local:///", numbers
/// with 0x, a query such as "?SchemaVersion=1.1.0" behind them.
///
/// @return  NOT_FOUND for an empty text; INVALID_DATA with the text for any other that is no URL
[[nodiscard]] VxExpected<DescriptionUrl> ParseDescriptionUrl(std::string_view text);

} // namespace control
