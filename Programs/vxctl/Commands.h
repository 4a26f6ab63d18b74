#pragma once

#include "vxctl/ExitCode.h"
#include "vxctl/Request.h"

#include <optional>

namespace vxctl {

/// Does what is asked for; results go to the standard output, warnings to the error output.
/// @return  what went wrong
[[nodiscard]] std::optional<Failure> Run(const Request& request);

} // namespace vxctl
