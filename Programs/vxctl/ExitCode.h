#pragma once

#include <string>

namespace vxctl {

/// How the program ends; the numbers are documented in the help text.
enum class ExitCode : int {
    Ok = 0,
    Refused = 1, ///< the camera refused: a feature, a value, a part of a configuration
    Usage = 2,   ///< the command line is wrong
    Camera = 3,  ///< the camera cannot be reached or controlled
    File = 4,    ///< a file cannot be read, written or understood
};

/// A command that did not work: what to print, and how to end.
struct Failure {
    ExitCode exitCode = ExitCode::Refused;
    std::string sentence; ///< without "error: " in front
};

} // namespace vxctl
