#pragma once

#include "VxBase/VxExpected.h"

#include "VxSimulator/VxSimulatorOptions.h"

#include <optional>
#include <string>

namespace vxsim {

enum class Talk { Quiet, Verbose };

/// What the user asks for.
struct CommandLine {
    VxSimulatorOptions camera;
    Talk talk = Talk::Quiet;
    std::optional<std::string> helpText; ///< if there is one, it is all that was asked for
};

/// @param argc, argv  as main gets them
/// @return  INVALID_PARAMETER with one sentence for the user
[[nodiscard]] VxExpected<CommandLine> ParseCommandLine(int argc, const char* const* argv);

} // namespace vxsim
