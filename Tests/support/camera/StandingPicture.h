#pragma once

#include <cstdint>

/// The camera behind the pin where its own work is measured: a stream whose pipeline gives out the same
/// picture again and again, at once.
///
/// Its source file stands in for the streaming half of the camera library at link time; pictures and
/// conversion are the library's own.
namespace StandingPicture {

/// Makes a picture of random bytes the one that every pipeline gives out.
/// @return  false when the format is not known
[[nodiscard]] bool Show(std::uint32_t pixelType, std::uint32_t widthPx, std::uint32_t heightPx);

} // namespace StandingPicture
