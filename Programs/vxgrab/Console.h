#pragma once

#include <string_view>

namespace vxgrab {

/// Writes text for people: as wide text to a console window (so that every script shows), as UTF-8 into a
/// pipe or file.
///
/// Thread: main thread only.
void PrintOutput(std::string_view utf8);

/// The same to the standard error stream.
void PrintError(std::string_view utf8);

/// @return  whether somebody reads the standard error stream in a console window now
[[nodiscard]] bool IsErrorConsole();

} // namespace vxgrab
