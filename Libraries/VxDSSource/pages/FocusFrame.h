#pragma once

#include <windows.h>

namespace pages {

/// Lets a control without a caption show that it has the focus: by a frame around the whole of it, where the
/// system has a caption to put it around.
/// @param control  takes part for the rest of its life
void DrawFocusAround(HWND control);

} // namespace pages
