#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/LoadedModule.h"

#include "VxBase/VxResult.h"

#include <windows.h>

#include <strmif.h>

#include <string>

namespace vxgrab {

/// Shows a device's property pages in the system's own frame and waits until that is closed. The calling
/// thread has to be in a COM apartment of its own.
///
/// @param caption  for the frame
/// @param module   where the device comes from when it is not registered, so that its pages come from there,
///                 too; else null
/// @param stop     an event that closes the frame; borrowed
/// @return  NOT_SUPPORTED for a device without pages
[[nodiscard]] VxResult ShowPropertyPages(const ComPtr<IBaseFilter>& device, const std::wstring& caption,
                                         const LoadedModule* module, HANDLE stop);

} // namespace vxgrab
