#pragma once

#include "VxBase/VxResult.h"

#include <windows.h>

#include <string>
#include <string_view>

namespace vxgrab {

/// What went wrong, in words: "cannot build the graph: VFW_E_CANNOT_CONNECT (0x80040217): the two filters
/// found no common format. Try another --subtype."
///
/// @param attempt  what was tried, as it reads after "cannot"
/// @param code     a failure code
[[nodiscard]] VxResult ComFailure(std::string_view attempt, HRESULT code);

/// @return  name, number and meaning of a code, and what to do about it where that is known
[[nodiscard]] std::string DescribeCode(HRESULT code);

} // namespace vxgrab
