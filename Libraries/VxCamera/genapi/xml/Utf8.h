#pragma once

#include <string>
#include <string_view>

namespace genapi {

/// Whether the bytes are UTF-8 throughout.
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// Every byte is a character of Latin-1; never fails.
[[nodiscard]] std::string Utf8FromLatin1(std::string_view bytes);

/// Text as it came from a camera: as it is when it is UTF-8, else taken for Latin-1.
[[nodiscard]] std::string Utf8FromCamera(std::string_view bytes);

} // namespace genapi
