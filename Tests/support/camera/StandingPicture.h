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
/// @param rowPaddingBytes  random ones behind each row
[[nodiscard]] bool Show(std::uint32_t pixelType, std::uint32_t widthPx, std::uint32_t heightPx,
                        std::uint32_t rowPaddingBytes = 0);

/// Whether the camera can be controlled; it tells its picture's size then. Without, it can only be received.
void AllowControl(bool isAllowed);

} // namespace StandingPicture
