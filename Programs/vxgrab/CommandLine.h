#pragma once

#include "vxgrab/Options.h"

#include <string>
#include <vector>

namespace vxgrab {

/// What a command line comes to: options, or a text to print and the exit code to end with.
struct CommandLineResult {
    std::optional<Options> options;
    std::string text; ///< help, version or what is wrong with the command line
    int exitCode = 0;
};

/// Reads the command line.
/// @param arguments  in UTF-8, without the program's name
[[nodiscard]] CommandLineResult ReadCommandLine(const std::vector<std::string>& arguments);

} // namespace vxgrab
