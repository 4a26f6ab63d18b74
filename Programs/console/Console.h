#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The command line and the standard streams of a program, in UTF-8 on every system.
///
/// On Windows the arguments are taken from the system's wide form, whatever its code page. A console window
/// gets its characters right; a file or a pipe gets UTF-8 with line ends of one character, which scripts on
/// every system read.
namespace console {

/// @param argc, argv  as main gets them
/// @return  the arguments without the program's name
[[nodiscard]] std::vector<std::string> Arguments(int argc, const char* const* argv);

/// Prints to the standard output stream.
void PrintOutput(std::string_view utf8);

/// The same to the standard error stream.
void PrintError(std::string_view utf8);

} // namespace console
