#pragma once

#include "vxctl/Request.h"

#include <optional>
#include <string>
#include <vector>

namespace vxctl {

/// What a command line says.
struct CommandLineResult {
    std::optional<Request> request; ///< empty: print the text and end
    std::string text;               ///< help or version for the standard output, or what is wrong
    int exitCode = 0;
};

/// @param arguments  UTF-8, without the program's name
[[nodiscard]] CommandLineResult ReadCommandLine(std::vector<std::string> arguments);

} // namespace vxctl
