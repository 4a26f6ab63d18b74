#pragma once

#include "VxBase/VxExpected.h"

#include <string>
#include <string_view>

namespace vxctl {

/// The name that stands for the standard input or output.
constexpr std::string_view kStandardStream = "-";

/// @param file  path in UTF-8, or "-"
/// @return  all bytes, without a byte order mark; NOT_FOUND or FAILED with a sentence that names the file
[[nodiscard]] VxExpected<std::string> ReadTextFile(const std::string& file);

/// Writes a file whole or not at all: until it is complete, one of that name stays as it is.
[[nodiscard]] VxResult WriteTextFile(const std::string& file, std::string_view text);

} // namespace vxctl
